#include <tavren/handles/emancipator.h>

namespace kel::tavren {

void Emancipator<char>::operator()(char *text) const noexcept {
  g_free(text);
}

void Emancipator<GstIterator>::operator()(GstIterator *iterator) const noexcept {
  gst_iterator_free(iterator);
}

}  // namespace kel::tavren
