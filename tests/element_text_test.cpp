// How messages of errors name elements.

#include <string>

#include "controlled_elements.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// The parentheses in the messages contain the metadata with the key "name", not the long name.

TEST(ElementText, ContainsTheNameMetadataOfTheFactory) {
  const Element tap = make_owned_tap("tap");
  expect_error({TEC::ELEMENT_HAS_NO_PARENT, {"tap", "camera tap 100%"}},
               [&tap] { Media_Helper::gst_element_get_parent_or_throw(tap.get()); });
  expect_error({TEC::STATE_SYNC_WITH_PARENT_FAILED, {"tap", "camera tap 100%"}},
               [&tap] { Media_Helper::gst_element_sync_state_with_parent_or_throw(tap.get()); });
  expect_error(
      {TEC::STATE_CHANGE_FAILED, {"GST_STATE_READY", "tap", "camera tap 100%", ", starting"}},
      [&tap] {
        Media_Helper::gst_element_set_state_or_throw(tap.get(), GST_STATE_READY, "starting");
      });
  EXPECT_EQ(reference_count(tap.get()), 1U);
}

TEST(ElementText, ContainsTheNameMetadataOfARefusedElement) {
  const Element bin = make_element("bin");
  gst_bin_add(GST_BIN_CAST(bin.get()), make_tap("tap"));
  GstElement *const refused = make_tap("tap");
  const Weak_Watch watch(refused);
  expect_error({TEC::BIN_ADD_FAILED, {"tap", "camera tap 100%"}},
               [&] { Media_Helper::gst_bin_add_or_throw(GST_BIN_CAST(bin.get()), refused); });
  EXPECT_TRUE(watch.gone());
}

// Longer than a typical fixed-size buffer, and in Latin-1.
const std::string awkward_names[] = {std::string(300, 'n'), std::string(5000, 'n'), "Geb\xE4ude 3",
                                     std::string(400, '\xFF') + "\xC3"};

void expect_whole_name_of_an_element(const std::string &name) {
  const Element element = make_owned_tap(name.c_str());
  const std::string kind = "camera tap 100%";
  expect_error({TEC::STATE_CHANGE_FAILED, {"GST_STATE_READY", name, kind, ", " + name}}, [&] {
    Media_Helper::gst_element_set_state_or_throw(element.get(), GST_STATE_READY, name);
  });
  expect_error({TEC::STATE_SYNC_WITH_PARENT_FAILED, {name, kind}},
               [&] { Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get()); });
  expect_error({TEC::ELEMENT_HAS_NO_BUS, {name}},
               [&] { Media_Helper::gst_element_get_bus_or_throw(element.get()); });
  expect_error({TEC::ELEMENT_HAS_NO_PARENT, {name, kind}},
               [&] { Media_Helper::gst_element_get_parent_or_throw(element.get()); });
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {name, name, kind}}, [&] {
    Media_Helper::gst_element_get_static_pad_or_throw(element.get(), name.c_str());
  });
  const Element bin = make_element("bin");
  gst_bin_add(GST_BIN_CAST(bin.get()), make_tap(name.c_str()));
  expect_error({TEC::BIN_ADD_FAILED, {name, kind}}, [&] {
    Media_Helper::gst_bin_add_or_throw(GST_BIN_CAST(bin.get()), make_tap(name.c_str()));
  });
}

void expect_whole_names_of_a_link(const std::string &name) {
  const Element first = make_owned_tap(name.c_str());
  const std::string sink = "to " + name;
  const Element second = make_element("fakesink", sink.c_str());
  expect_error({TEC::ELEMENT_LINK_FAILED, {name, sink}}, [&] {
    Media_Helper::gst_element_link_many_or_throw(first.get(), second.get(),
                                                 static_cast<GstElement *>(nullptr));
  });
  GstPad *const pad = gst_pad_new(name.c_str(), GST_PAD_SRC);
  gst_element_add_pad(first.get(), pad);
  const Element other = make_element("fakesrc");
  ASSERT_TRUE(gst_element_link(other.get(), second.get()));
  expect_error(
      {TEC::PAD_LINK_FAILED, {name, name, sink, "GST_PAD_LINK_WAS_LINKED: pad was already linked"}},
      [&] { Media_Helper::link_pad_to_element_or_throw(pad, second.get()); });
}

TEST(ElementText, ContainsNamesByteForByte) {
  for (const std::string &name : awkward_names) {
    expect_whole_name_of_an_element(name);
    expect_whole_names_of_a_link(name);
  }
}

TEST(ElementText, IsEmptyWithoutANameAndAFactory) {
  static const GType type = make_subclass(GST_TYPE_BIN, "TestNamelessBin");
  const Element bin = make_of_type(type, "own");
  ASSERT_EQ(gst_element_get_factory(bin.get()), nullptr);
  expect_error({TEC::ELEMENT_HAS_NO_PARENT, {"own", ""}},
               [&bin] { Media_Helper::gst_element_get_parent_or_throw(bin.get()); });

  g_free(GST_OBJECT_NAME(bin.get()));
  GST_OBJECT_NAME(bin.get()) = nullptr;
  expect_error({TEC::ELEMENT_HAS_NO_PARENT, {"", ""}},
               [&bin] { Media_Helper::gst_element_get_parent_or_throw(bin.get()); });
  // A bin has no bus unless it is in a pipeline.
  expect_error({TEC::ELEMENT_HAS_NO_BUS, {""}},
               [&bin] { Media_Helper::gst_element_get_bus_or_throw(bin.get()); });
}

}  // namespace
}  // namespace kel::tavren::tests
