// Element types: from a factory's name to the type of its elements.

#include <functional>
#include <string>
#include <vector>

#include <gst/app/gstappsink.h>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"
#include "replaced_function.h"

namespace {

// Simulates a missing or broken plugin on this thread.
struct Plugin_Fault {
  bool not_loaded = false;
  bool without_type = false;
  GstPluginFeature *loaded_instead = nullptr;
  GstElementFactory *found_instead = nullptr;
  std::function<void()> when_asked_for_type = [] {};
};
thread_local Plugin_Fault plugin_fault;

}  // namespace

using kel::tavren::tests::replaced_function;

extern "C" GstElementFactory *gst_element_factory_find(const gchar *name) {
  static const auto find = replaced_function(gst_element_factory_find, __func__);
  if (plugin_fault.found_instead != nullptr)
    return GST_ELEMENT_FACTORY(gst_object_ref(plugin_fault.found_instead));
  return find(name);
}

extern "C" GstPluginFeature *gst_plugin_feature_load(GstPluginFeature *feature) {
  static const auto load = replaced_function(gst_plugin_feature_load, __func__);
  if (plugin_fault.not_loaded) return nullptr;
  if (plugin_fault.loaded_instead != nullptr)
    return GST_PLUGIN_FEATURE(gst_object_ref(plugin_fault.loaded_instead));
  return load(feature);
}

extern "C" GType gst_element_factory_get_element_type(GstElementFactory *factory) {
  static const auto get_type = replaced_function(gst_element_factory_get_element_type, __func__);
  plugin_fault.when_asked_for_type();
  return plugin_fault.without_type ? G_TYPE_INVALID : get_type(factory);
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

class GetElementType : public testing::Test {
protected:
  ~GetElementType() override {
    plugin_fault = {};
    for (GstElementFactory *const factory : found_)
      gst_object_unref(factory);
  }

  GstElementFactory *find(const char *name) {
    found_.push_back(gst_element_factory_find(name));
    return found_.back();
  }

private:
  std::vector<GstElementFactory *> found_;
};

TEST_F(GetElementType, ReturnsTheTypeThatTheFactoryCreates) {
  for (const char *const name : {"tee", "appsink", "queue", "fakesink", "pipeline"}) {
    const Element element = make_element(name);
    EXPECT_EQ(Media_Helper::get_element_type(name), G_OBJECT_TYPE(element.get())) << name;
  }
  EXPECT_STREQ(g_type_name(Media_Helper::get_element_type("tee")), "GstTee");
  EXPECT_EQ(Media_Helper::get_element_type("appsink"), GST_TYPE_APP_SINK);
  EXPECT_EQ(Media_Helper::get_element_type("pipeline"), GST_TYPE_PIPELINE);
}

TEST_F(GetElementType, RegistersTheTypeByLoadingThePlugin) {
  ASSERT_EQ(g_type_from_name("GstNavSeek"), G_TYPE_INVALID);
  const unsigned long long type = Media_Helper::get_element_type("navseek");
  EXPECT_STREQ(g_type_name(type), "GstNavSeek");
}

TEST_F(GetElementType, ReturnsTheSameTypeEachTimeWithoutLeakingAReference) {
  for (const char *const name : {"tee", "appsink"}) {
    GstElementFactory *const factory = find(name);
    const guint before = reference_count(factory);
    const unsigned long long type = Media_Helper::get_element_type(name);
    EXPECT_EQ(Media_Helper::get_element_type(name), type);
    EXPECT_EQ(reference_count(factory), before);
  }
}

TEST_F(GetElementType, RequiresAFactory) {
  expect_error({TEC::FACTORY_NOT_FOUND, {"nonesuch"}},
               [] { Media_Helper::get_element_type("nonesuch"); });
  expect_error({TEC::FACTORY_NOT_FOUND, {""}}, [] { Media_Helper::get_element_type(""); });
}

TEST_F(GetElementType, RequiresAPluginThatLoads) {
  GstElementFactory *const factory = find("tee");
  const guint before = reference_count(factory);
  plugin_fault.not_loaded = true;
  expect_error({TEC::FACTORY_NOT_LOADED, {"tee"}}, [] { Media_Helper::get_element_type("tee"); });
  EXPECT_EQ(reference_count(factory), before);

  plugin_fault = {};
  EXPECT_STREQ(g_type_name(Media_Helper::get_element_type("tee")), "GstTee");
  EXPECT_EQ(reference_count(factory), before);
}

TEST_F(GetElementType, RequiresAFactoryWithAType) {
  GstElementFactory *const factory = find("tee");
  const guint before = reference_count(factory);
  plugin_fault.without_type = true;
  expect_error({TEC::FACTORY_HAS_NO_ELEMENT_TYPE, {"tee"}},
               [] { Media_Helper::get_element_type("tee"); });
  EXPECT_EQ(reference_count(factory), before);
}

// Loading may replace the factory. Then there are two factories, and each must be released once.
TEST_F(GetElementType, ReturnsTheTypeOfTheLoadedFactory) {
  GstElementFactory *const found = find("tee");
  GstElementFactory *const loaded = find("queue");
  const unsigned long long queue_type = Media_Helper::get_element_type("queue");
  const guint found_before = reference_count(found);
  const guint loaded_before = reference_count(loaded);

  plugin_fault.loaded_instead = GST_PLUGIN_FEATURE(loaded);
  EXPECT_EQ(Media_Helper::get_element_type("tee"), queue_type);
  EXPECT_EQ(reference_count(found), found_before);
  EXPECT_EQ(reference_count(loaded), loaded_before);

  plugin_fault.without_type = true;
  expect_error({TEC::FACTORY_HAS_NO_ELEMENT_TYPE, {"tee"}},
               [] { Media_Helper::get_element_type("tee"); });
  EXPECT_EQ(reference_count(found), found_before);
  EXPECT_EQ(reference_count(loaded), loaded_before);
}

// A factory outside the registry that records its destruction.
class Lone_Factory {
public:
  Lone_Factory(const char *name, std::string &ends)
      : name_(name), ends_(ends),
        factory_(GST_ELEMENT_FACTORY(g_object_new(GST_TYPE_ELEMENT_FACTORY, nullptr))) {
    gst_object_ref_sink(factory_);
    g_object_weak_ref(
        G_OBJECT(factory_),
        [](gpointer data, GObject *) {
          auto *const factory = static_cast<Lone_Factory *>(data);
          factory->ends_ += factory->name_;
        },
        this);
  }
  Lone_Factory(const Lone_Factory &) = delete;
  Lone_Factory &operator=(const Lone_Factory &) = delete;

  GstElementFactory *get() const { return factory_; }
  void let_go() { gst_object_unref(factory_); }

private:
  const std::string name_;
  std::string &ends_;
  GstElementFactory *const factory_;
};

// The guards release the last references.
TEST_F(GetElementType, ReleasesTheLoadedFactoryBeforeTheFoundOne) {
  std::string ends;
  Lone_Factory found("found ", ends);
  Lone_Factory loaded("loaded ", ends);
  plugin_fault.found_instead = found.get();
  plugin_fault.loaded_instead = GST_PLUGIN_FEATURE(loaded.get());
  plugin_fault.when_asked_for_type = [&found, &loaded] {
    found.let_go();
    loaded.let_go();
  };
  EXPECT_THROW(Media_Helper::get_element_type("tee"), std::runtime_error);
  EXPECT_EQ(ends, "loaded found ");
}

}  // namespace
}  // namespace kel::tavren::tests
