// Searches of bins by type and caps.

#include <memory>
#include <string>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

constexpr int depth = 10;  // of nested bins

// A bin with the given number of elements, either flat or distributed evenly over nested bins. The
// search visits one kind of element first and another one last.
class Searched_Bin {
public:
  static constexpr const char *first_factory = "queue";
  static constexpr const char *last_factory = "valve";
  static constexpr const char *other_factory = "identity";
  static constexpr const char *missing_factory = "funnel";

  Searched_Bin(int elements, bool is_nested) {
    const int levels = is_nested ? depth : 1;
    GstElement *innermost = bin_.get();
    for (int level = 1; level <= levels; ++level) {
      // The search visits the last added element first. It visits nested elements when it reaches
      // their bin.
      const bool is_last_level = level == levels;
      GstElement *const inner = is_last_level ? nullptr : make("bin");
      if (is_last_level) add(innermost, make(last_factory));
      if (inner != nullptr) add(innermost, inner);
      const int ends = (is_last_level ? 1 : 0) + (level == 1 ? 1 : 0);
      for (int i = ends; i < elements / levels; ++i)
        add(innermost, make(other_factory));
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

// The element to search for, and whether the bins contain it.
struct Wanted {
  const char *name;
  const char *factory;
  const char *caps;
  bool is_there;
  bool takes_all;  // whether the search visits all elements
};

constexpr Wanted hit_first = {"hit first", Searched_Bin::first_factory, "ANY", true, false};
constexpr Wanted hit_last = {"hit last", Searched_Bin::last_factory, "ANY", true, true};
constexpr Wanted miss = {"miss", Searched_Bin::missing_factory, "ANY", false, true};
// Nearly all elements have this type, but none has matching caps.
constexpr Wanted miss_by_caps = {"miss by caps", Searched_Bin::other_factory, "text/x-raw", false,
                                 true};

struct Search {
  std::shared_ptr<const Searched_Bin> bin;  // shared, because filling a large bin is slow
  bool is_long;
  Wanted wanted;
};

GType type_of(const char *factory) {
  return G_OBJECT_TYPE(owned(gst_element_factory_make(factory, nullptr)).get());
}

template <typename Calls>
class Search_Trial : public Trial {
public:
  explicit Search_Trial(const Search &search)
      : search_(search), bin_(Calls::see_bin(search.bin->get())),
        type_(type_of(search.wanted.factory)),
        caps_(owned(gst_caps_from_string(search.wanted.caps))) {}

  int counted_runs() const override { return search_.is_long ? 1 : 20; }

protected:
  Search search_;
  typename Calls::Bin bin_;
  GType type_;
  Owned_Caps caps_;
};

template <typename Calls>
class Find : public Search_Trial<Calls> {
public:
  using Search_Trial<Calls>::Search_Trial;

  void run() override {
    require(Calls::find(this->bin_, this->type_, this->caps_.get()) ==
                this->search_.wanted.is_there,
            "a search by type and caps");
  }
};

template <typename Calls>
class Has_Type : public Search_Trial<Calls> {
public:
  using Search_Trial<Calls>::Search_Trial;

  void run() override {
    require(Calls::has_type(this->bin_, this->type_) == this->search_.wanted.is_there,
            "a search by type");
  }
};

template <template <typename> class Search_By>
void add_search(Programme &programme, const std::string &by, const Search &search,
                const std::string &where, int elements) {
  programme.add<Search_By, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "bin search/" + by + ", " + where + ", " + search.wanted.name + "/" +
          std::to_string(elements),
      1, search);
}

}  // namespace

void add_bin_search(Programme &programme) {
  for (const bool is_nested : {false, true})
    for (const int elements : {10, 100, 1000, 10000}) {
      const auto bin = std::make_shared<const Searched_Bin>(elements, is_nested);
      const std::string where = is_nested ? "nested" : "flat";
      const bool is_large = elements >= 1000;
      for (const Wanted &wanted : {hit_first, hit_last, miss}) {
        const Search search{bin, is_large && wanted.takes_all, wanted};
        add_search<Find>(programme, "type and caps", search, where, elements);
        add_search<Has_Type>(programme, "type", search, where, elements);
      }
      add_search<Find>(programme, "type and caps", {bin, is_large, miss_by_caps}, where, elements);
    }
}

}  // namespace kel::tavren::benchmarks
