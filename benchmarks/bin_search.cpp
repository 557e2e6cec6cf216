// Bins searched by type and caps.

#include <memory>
#include <string>
#include <utility>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

constexpr int depth = 10;  // of nested bins

// A bin of a number of elements, flat or spread evenly over bins that lie in each other. The search
// meets one kind of element first and another last.
class Searched_Bin {
public:
  static constexpr const char *first_factory = "queue";
  static constexpr const char *last_factory = "valve";
  static constexpr const char *missing_factory = "funnel";

  Searched_Bin(int elements, bool is_nested) {
    const int levels = is_nested ? depth : 1;
    GstElement *innermost = bin_.get();
    for (int level = 1; level <= levels; ++level) {
      // What is added last is met first; what lies deeper is met when its bin is.
      const bool is_last_level = level == levels;
      GstElement *const inner = is_last_level ? nullptr : make("bin");
      if (is_last_level) add(innermost, make(last_factory));
      if (inner != nullptr) add(innermost, inner);
      const int ends = (is_last_level ? 1 : 0) + (level == 1 ? 1 : 0);
      for (int i = ends; i < elements / levels; ++i)
        add(innermost, make("identity"));
      if (level == 1) add(innermost, make(first_factory));
      innermost = inner;
    }
  }

  GstElement *get() const { return bin_.get(); }

private:
  static GstElement *make(const char *factory) {
    return gst_element_factory_make(factory, nullptr);
  }
  static void add(GstElement *bin, GstElement *element) {
    require(gst_bin_add(GST_BIN_CAST(bin), element), "filling a bin");
  }

  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
};

struct Search {
  std::shared_ptr<const Searched_Bin> bin;  // the same for all: filling a large one takes long
  int elements;
  const char *factory;
};

GType type_of(const char *factory) {
  return G_OBJECT_TYPE(owned(gst_element_factory_make(factory, nullptr)).get());
}

template <typename Calls>
class Search_Trial : public Trial {
public:
  explicit Search_Trial(const Search &search)
      : bin_(Calls::see_bin(search.bin->get())), type_(type_of(search.factory)),
        is_there_(search.factory != Searched_Bin::missing_factory),
        is_long_(search.factory != Searched_Bin::first_factory && search.elements >= 1000) {}

  int counted_runs() const override { return is_long_ ? 1 : 20; }

protected:
  typename Calls::Bin bin_;
  GType type_;
  bool is_there_;
  bool is_long_;
};

template <typename Calls>
class Find : public Search_Trial<Calls> {
public:
  using Search_Trial<Calls>::Search_Trial;

  void run() override {
    require(Calls::find(this->bin_, this->type_, caps_.get()) == this->is_there_,
            "a search by type and caps");
  }

private:
  Owned_Caps caps_ = owned(gst_caps_new_any());
};

template <typename Calls>
class Has_Type : public Search_Trial<Calls> {
public:
  using Search_Trial<Calls>::Search_Trial;

  void run() override {
    require(Calls::has_type(this->bin_, this->type_) == this->is_there_, "a search by type");
  }
};

}  // namespace

void add_bin_search(Programme &programme) {
  const std::pair<const char *, const char *> hits[] = {
      {"hit first", Searched_Bin::first_factory},
      {"hit last", Searched_Bin::last_factory},
      {"miss", Searched_Bin::missing_factory},
  };
  for (const bool is_nested : {false, true})
    for (const int elements : {10, 100, 1000, 10000}) {
      const auto bin = std::make_shared<const Searched_Bin>(elements, is_nested);
      for (const auto &[hit, factory] : hits) {
        const std::string where = std::string(is_nested ? "nested" : "flat") + ", " + hit + "/" +
                                  std::to_string(elements);
        const Search search{bin, elements, factory};
        programme.add<Find, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
            "bin search/type and caps, " + where, 1, search);
        programme.add<Has_Type, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
            "bin search/type, " + where, 1, search);
      }
    }
}

}  // namespace kel::tavren::benchmarks
