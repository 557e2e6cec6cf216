#include <array>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

using Root_Error = Tavren_Error<std::exception>;
using Logic_Error = Tavren_Error<std::logic_error>;
using Runtime_Error = Tavren_Error<std::runtime_error>;
using Backend_Root = Backend_Error<std::exception>;
using Backend_Runtime = Backend_Error<std::runtime_error>;

// Checks for public, unambiguous inheritance, which a handler for Base requires in order to catch a
// Derived.
template <typename Base, typename Derived>
constexpr bool has_base = std::is_convertible_v<Derived *, Base *>;

// A static downcast is ill-formed only from a virtual base.
template <typename Base, typename Derived, typename = void>
constexpr bool casts_down = false;
template <typename Base, typename Derived>
constexpr bool casts_down<Base, Derived,
                          std::void_t<decltype(static_cast<Derived *>(std::declval<Base *>()))>> =
    true;

template <typename Base, typename Derived>
constexpr bool has_virtual_base = has_base<Base, Derived> && !casts_down<Base, Derived>;
template <typename Base, typename Derived>
constexpr bool has_plain_base = has_base<Base, Derived> &&casts_down<Base, Derived>;

static_assert(!has_base<std::exception, Root_Error>);
static_assert(std::is_polymorphic_v<Root_Error>);

static_assert(has_plain_base<std::logic_error, Logic_Error>);
static_assert(has_virtual_base<Root_Error, Logic_Error>);
static_assert(!has_base<Backend_Root, Logic_Error>);

static_assert(has_plain_base<std::runtime_error, Runtime_Error>);
static_assert(has_virtual_base<Root_Error, Runtime_Error>);
static_assert(!has_base<Backend_Root, Runtime_Error>);

static_assert(has_virtual_base<Root_Error, Backend_Root>);
static_assert(!has_base<std::exception, Backend_Root>);

static_assert(has_plain_base<Runtime_Error, Backend_Runtime>);
static_assert(has_plain_base<Backend_Root, Backend_Runtime>);
static_assert(has_plain_base<std::runtime_error, Backend_Runtime>);
static_assert(has_plain_base<std::exception, Backend_Runtime>);
static_assert(has_virtual_base<Root_Error, Backend_Runtime>);

template <typename Error>
constexpr bool destroys_safely =
    std::has_virtual_destructor_v<Error> &&std::is_nothrow_destructible_v<Error>;
static_assert(destroys_safely<Root_Error> && destroys_safely<Logic_Error> &&
              destroys_safely<Runtime_Error> && destroys_safely<Backend_Root> &&
              destroys_safely<Backend_Runtime>);

// If a copy constructor threw while an exception is thrown or transferred to another thread, the
// program would terminate.
static_assert(std::is_nothrow_copy_constructible_v<Logic_Error> &&
              std::is_nothrow_copy_constructible_v<Backend_Runtime>);

// The roots exist only as bases of errors.
static_assert(!std::is_constructible_v<Root_Error, TEC::Tavren_Error_Code>);
static_assert(!std::is_constructible_v<Backend_Root, TEC::Tavren_Error_Code>);

static_assert(std::is_constructible_v<Backend_Runtime, TEC::Tavren_Error_Code, std::string>);
static_assert(std::is_constructible_v<Backend_Runtime, TEC::Tavren_Error_Code, const char *>);
static_assert(std::is_constructible_v<Logic_Error, TEC::Tavren_Error_Code, const char *>);

static_assert(noexcept(std::declval<const Root_Error &>().code()));

// An exception that is constructed from several arguments, one of which is move-only.
class Broken_Disk : public std::runtime_error {
public:
  Broken_Disk(const std::string &text, int disk, std::unique_ptr<int> sector)
      : std::runtime_error(text + " " + std::to_string(disk) + ":" + std::to_string(*sector)) {}
};

static_assert(sizeof(TEC::Tavren_Error_Code) == 4);

void fail_at_backend() {
  Media_Helper::is_element_or_throw(nullptr, "element in gst_element_get_bus_or_throw");
}

void fail_in_logic() {
  Media_Helper::calculate_resolution({0, 1}, {1, 1});
}

template <typename Handler>
bool caught_as(const std::function<void()> &call) {
  try {
    call();
  } catch (const Handler &) {
    return true;
  } catch (...) {
  }
  return false;
}

TEST(TavrenError, OfTheBackendIsCaughtAsEveryBase) {
  EXPECT_TRUE(caught_as<Backend_Runtime>(fail_at_backend));
  EXPECT_TRUE(caught_as<Backend_Root>(fail_at_backend));
  EXPECT_TRUE(caught_as<Runtime_Error>(fail_at_backend));
  EXPECT_TRUE(caught_as<Root_Error>(fail_at_backend));
  EXPECT_TRUE(caught_as<std::runtime_error>(fail_at_backend));
  EXPECT_TRUE(caught_as<std::exception>(fail_at_backend));
}

TEST(TavrenError, OfTheBackendIsNotALogicError) {
  EXPECT_FALSE(caught_as<Logic_Error>(fail_at_backend));
  EXPECT_FALSE(caught_as<std::logic_error>(fail_at_backend));
}

TEST(TavrenError, OfLogicIsCaughtAsEveryBase) {
  EXPECT_TRUE(caught_as<Logic_Error>(fail_in_logic));
  EXPECT_TRUE(caught_as<Root_Error>(fail_in_logic));
  EXPECT_TRUE(caught_as<std::logic_error>(fail_in_logic));
  EXPECT_TRUE(caught_as<std::exception>(fail_in_logic));
}

TEST(TavrenError, OfLogicIsNotABackendError) {
  EXPECT_FALSE(caught_as<Backend_Runtime>(fail_in_logic));
  EXPECT_FALSE(caught_as<Backend_Root>(fail_in_logic));
  EXPECT_FALSE(caught_as<Runtime_Error>(fail_in_logic));
  EXPECT_FALSE(caught_as<std::runtime_error>(fail_in_logic));
}

TEST(TavrenError, ReturnsTheCodeThroughItsRoot) {
  try {
    Media_Helper::gst_element_get_bus_or_throw(nullptr);
    FAIL() << "threw nothing";
  } catch (const Root_Error &error) {
    EXPECT_EQ(error.code(), 0x15160);
    EXPECT_EQ(typeid(error), typeid(Backend_Runtime));
  }
}

TEST(TavrenError, ReturnsTheCodeOfALogicErrorThroughItsRoot) {
  try {
    fail_in_logic();
    FAIL() << "threw nothing";
  } catch (const Root_Error &error) {
    EXPECT_EQ(error.code(), 0x15250);
    EXPECT_EQ(typeid(error), typeid(Logic_Error));
  }
}

TEST(TavrenError, ReturnsTheTextThroughItsStandardBase) {
  try {
    fail_at_backend();
    FAIL() << "threw nothing";
  } catch (const std::runtime_error &error) {
    EXPECT_STREQ(error.what(), "element in gst_element_get_bus_or_throw is not a GstElement *.");
  }
}

TEST(TavrenError, HasOneCodeInBothBranches) {
  Backend_Runtime error(TEC::NOT_A_BIN, "text");
  Root_Error *const by_text = static_cast<Runtime_Error *>(&error);
  Root_Error *const by_kind = static_cast<Backend_Root *>(&error);
  EXPECT_EQ(by_text, by_kind);
}

TEST(TavrenError, HasItsStandardBaseFirst) {
  const Backend_Runtime backend(TEC::NOT_A_BIN, "text");
  EXPECT_EQ(static_cast<const void *>(static_cast<const std::exception *>(&backend)),
            static_cast<const void *>(&backend));
  const Logic_Error logic(TEC::INVALID_RESOLUTION, "text");
  EXPECT_EQ(static_cast<const void *>(static_cast<const std::exception *>(&logic)),
            static_cast<const void *>(&logic));
}

TEST(TavrenError, KeepsItsTextUnchanged) {
  const std::vector<std::string> texts = {"",
                                          " ",
                                          "%s %d %% %1%",
                                          "two\nlines\t",
                                          "\"quoted\"",
                                          "Gr\xC3\xBC\xC3\x9F"
                                          "e",
                                          std::string(100000, 'x')};
  for (const std::string &text : texts) {
    EXPECT_EQ(Backend_Runtime(TEC::NOT_A_BIN, text).what(), text);
    EXPECT_EQ(Backend_Runtime(TEC::NOT_A_BIN, text.c_str()).what(), text);
    EXPECT_EQ(Runtime_Error(TEC::NOT_A_BIN, text).what(), text);
    EXPECT_EQ(Logic_Error(TEC::INVALID_RESOLUTION, text.c_str()).what(), text);
  }
}

template <typename Error, typename Base>
void expect_error_of(const Error &error, const std::string &text) {
  static_assert(has_plain_base<Base, Error> && has_virtual_base<Root_Error, Error>);
  EXPECT_EQ(static_cast<const Root_Error &>(error).code(), 0x15180);
  EXPECT_EQ(static_cast<const Base &>(error).what(), text);
}

TEST(TavrenError, CanDeriveFromEveryStandardException) {
  expect_error_of<Tavren_Error<std::range_error>, std::range_error>(
      Tavren_Error<std::range_error>(TEC::NOT_A_BIN, "text"), "text");
  expect_error_of<Backend_Error<std::invalid_argument>, std::invalid_argument>(
      Backend_Error<std::invalid_argument>(TEC::NOT_A_BIN, std::string("text")), "text");
  expect_error_of<Tavren_Error<std::bad_alloc>, std::bad_alloc>(
      Tavren_Error<std::bad_alloc>(TEC::NOT_A_BIN), std::bad_alloc().what());
  expect_error_of<Backend_Error<std::bad_alloc>, std::bad_alloc>(
      Backend_Error<std::bad_alloc>(TEC::NOT_A_BIN), std::bad_alloc().what());
}

TEST(TavrenError, PassesAllArgumentsToItsBase) {
  const std::error_code full = std::make_error_code(std::errc::no_space_on_device);
  const std::string text = std::system_error(full, "recording").what();
  const Tavren_Error<std::system_error> tavren(TEC::NOT_A_BIN, full, "recording");
  expect_error_of<Tavren_Error<std::system_error>, std::system_error>(tavren, text);
  EXPECT_EQ(tavren.std::system_error::code(), full);
  const Backend_Error<std::system_error> backend(TEC::NOT_A_BIN, full, std::string("recording"));
  const Tavren_Error<std::system_error> &by_text = backend;
  EXPECT_STREQ(by_text.what(), text.c_str());
  EXPECT_EQ(by_text.std::system_error::code(), full);

  expect_error_of<Tavren_Error<Broken_Disk>, Broken_Disk>(
      Tavren_Error<Broken_Disk>(TEC::NOT_A_BIN, "broken", 7, std::make_unique<int>(8)),
      "broken 7:8");
  expect_error_of<Backend_Error<Broken_Disk>, Broken_Disk>(
      Backend_Error<Broken_Disk>(TEC::NOT_A_BIN, "broken", 7, std::make_unique<int>(8)),
      "broken 7:8");
}

TEST(TavrenError, WithAnotherBaseIsCaughtAsEveryBase) {
  const auto fail = [] { throw Backend_Error<std::range_error>(TEC::NOT_A_BIN, "text"); };
  EXPECT_TRUE(caught_as<Backend_Root>(fail));
  EXPECT_TRUE(caught_as<Root_Error>(fail));
  EXPECT_TRUE(caught_as<Tavren_Error<std::range_error>>(fail));
  EXPECT_TRUE(caught_as<std::range_error>(fail));
  EXPECT_TRUE(caught_as<std::exception>(fail));
  EXPECT_FALSE(caught_as<Backend_Runtime>(fail));
}

TEST(TavrenError, CopiesItsText) {
  std::string text = "text";
  const Backend_Runtime error(TEC::NOT_A_BIN, text);
  text = "other";
  EXPECT_STREQ(error.what(), "text");
}

TEST(TavrenError, CopyOutlivesTheOriginal) {
  auto original = std::make_unique<Backend_Runtime>(TEC::NOT_A_PAD, "text");
  const Backend_Runtime copy = *original;
  original.reset();
  EXPECT_EQ(copy.code(), 0x15170);
  EXPECT_STREQ(copy.what(), "text");
}

TEST(TavrenError, AssignmentCopiesCodeAndText) {
  Backend_Runtime error(TEC::NOT_A_PAD, "text");
  error = Backend_Runtime(TEC::NOT_A_BIN, "other");
  EXPECT_EQ(error.code(), 0x15180);
  EXPECT_STREQ(error.what(), "other");

  Logic_Error logic(TEC::NOT_A_PAD, "text");
  logic = Logic_Error(TEC::INVALID_RESOLUTION, "other");
  EXPECT_EQ(logic.code(), 0x15250);
  EXPECT_STREQ(logic.what(), "other");
}

// Records that the most derived destructor has run.
template <typename Error>
class Watched_Error : public Error {
public:
  explicit Watched_Error(bool &destroyed)
      : Root_Error(TEC::NOT_A_BIN), Error(TEC::NOT_A_BIN, std::string(1000, 'x')),
        destroyed_(destroyed) {}
  ~Watched_Error() override { destroyed_ = true; }

private:
  bool &destroyed_;
};

template <typename Base, typename Error>
bool destroyed_through() {
  bool destroyed = false;
  std::unique_ptr<Base>(new Watched_Error<Error>(destroyed));
  // Test the class itself, too, with a text whose leak would be detected.
  std::unique_ptr<Base>(new Error(TEC::NOT_A_BIN, std::string(1000, 'x')));
  return destroyed;
}

TEST(TavrenError, IsDestroyedThroughEveryBase) {
  EXPECT_TRUE((destroyed_through<Backend_Runtime, Backend_Runtime>()));
  EXPECT_TRUE((destroyed_through<Backend_Root, Backend_Runtime>()));
  EXPECT_TRUE((destroyed_through<Runtime_Error, Backend_Runtime>()));
  EXPECT_TRUE((destroyed_through<Root_Error, Backend_Runtime>()));
  EXPECT_TRUE((destroyed_through<std::runtime_error, Backend_Runtime>()));
  EXPECT_TRUE((destroyed_through<std::exception, Backend_Runtime>()));

  EXPECT_TRUE((destroyed_through<Logic_Error, Logic_Error>()));
  EXPECT_TRUE((destroyed_through<Root_Error, Logic_Error>()));
  EXPECT_TRUE((destroyed_through<std::logic_error, Logic_Error>()));
  EXPECT_TRUE((destroyed_through<std::exception, Logic_Error>()));
}

std::exception_ptr caught_elsewhere() {
  std::exception_ptr carried;
  std::thread([&carried] {
    try {
      fail_at_backend();
    } catch (...) {
      carried = std::current_exception();
    }
  }).join();
  return carried;
}

TEST(TavrenError, OutlivesTheThreadThatThrewIt) {
  const std::exception_ptr carried = caught_elsewhere();
  ASSERT_TRUE(carried);
  expect_error(0x15160, "element in gst_element_get_bus_or_throw is not a GstElement *.",
               [&carried] { std::rethrow_exception(carried); });
}

TEST(TavrenError, IsReadAndCopiedOnManyThreadsAtOnce) {
  const std::exception_ptr carried = caught_elsewhere();
  ASSERT_TRUE(carried);
  std::array<int, 4> good{};
  std::vector<std::thread> threads;
  for (int &count : good)
    threads.emplace_back([&carried, &count] {
      for (int i = 0; i < 100; ++i) {
        try {
          std::rethrow_exception(carried);
        } catch (const Backend_Runtime &error) {
          const Backend_Runtime copy = error;
          count += copy.code() == 0x15160 &&
                   copy.what() == std::string("element in gst_element_get_bus_or_throw is not a "
                                              "GstElement *.");
        }
      }
    });
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(good, (std::array<int, 4>{100, 100, 100, 100}));
}

}  // namespace
}  // namespace kel::tavren::tests
