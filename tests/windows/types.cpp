// The sizes and types of GLib's configuration on 64-bit Windows.

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <glib-object.h>

static_assert(sizeof(long) == 4 && sizeof(void *) == 8, "64-bit Windows");
static_assert(GLIB_SIZEOF_LONG == sizeof(glong) && GLIB_SIZEOF_SIZE_T == sizeof(gsize));
static_assert(std::is_same_v<gsize, std::size_t> && std::is_same_v<gsize, unsigned long long>);
static_assert(std::is_same_v<gssize, std::ptrdiff_t>);
static_assert(std::is_same_v<gint64, std::int64_t> && std::is_same_v<guint64, std::uint64_t>);
static_assert(std::is_same_v<decltype(G_GUINT64_CONSTANT(1)), guint64>);
static_assert(std::is_same_v<gintptr, std::intptr_t> && std::is_same_v<guintptr, std::uintptr_t>);
static_assert(std::is_same_v<GType, gsize>);
static_assert(G_MAXSIZE == SIZE_MAX && G_MAXSSIZE == PTRDIFF_MAX);
static_assert(sizeof(GPid) == sizeof(void *) && G_DIR_SEPARATOR == '\\');
