// Names and other texts of the caller in messages and reports: complete, and byte for byte.

#include <map>
#include <string>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// Texts longer than a typical fixed-size buffer, and in Latin-1.
class TextInMessage : public testing::TestWithParam<std::string> {
protected:
  const std::string &text_ = GetParam();
};

INSTANTIATE_TEST_SUITE_P(All, TextInMessage,
                         testing::Values(std::string(301, 'n'), std::string(5000, 'n'),
                                         "Geb\xE4ude_3", std::string(400, '\xFF') + "\xC3"),
                         [](const auto &test) { return "Text" + std::to_string(test.index); });

TEST_P(TextInMessage, NamesAnUnknownFactory) {
  const Expected_Error error{TEC::FACTORY_NOT_FOUND, {text_}};
  expect_error(error, [this] { Media_Helper::gst_element_factory_find_or_throw(text_); });
  expect_error(error, [this] { Media_Helper::get_element_type(text_); });
}

TEST_P(TextInMessage, NamesAnElementThatIsNotCreated) {
  expect_error({TEC::ELEMENT_CREATION_FAILED, {text_, text_}},
               [this] { Media_Helper::gst_element_factory_make_or_throw(text_, text_); });
}

TEST_P(TextInMessage, IsTheDescriptionOfAPipeline) {
  expect_error({TEC::PARSE_LAUNCH_FAILED, {text_}},
               [this] { Media_Helper::gst_parse_launch_or_throw(text_); });
}

TEST_P(TextInMessage, NamesAnElementThatIsNotInTheBin) {
  const Element bin = make_bin("bin");
  expect_error({TEC::ELEMENT_NOT_IN_BIN, {text_}},
               [&] { Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN_CAST(bin.get()), text_); });
}

TEST_P(TextInMessage, NamesASignalAndItsElement) {
  const Element element = make_element("identity", text_.c_str());
  const Expected_Log log("is invalid for instance");
  expect_error({TEC::SIGNAL_CONNECTION_FAILED, {text_, text_}}, [&] {
    Media_Helper::g_signal_connect_or_throw(
        element.get(), text_, [] {}, nullptr);
  });
}

TEST_P(TextInMessage, NamesTheMissingPartnerOfAPad) {
  const Element bin = make_bin(text_.c_str());
  const Pad pad = make_pad(("src_" + text_).c_str(), GST_PAD_SRC);
  ASSERT_TRUE(gst_element_add_pad(bin.get(), pad.get()));
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"sink_" + text_, text_, ""}},
               [&] { Media_Helper::get_corresponding_multiqueue_pad(pad.get()); });
}

TEST_P(TextInMessage, DescribesAnArgument) {
  expect_error({TEC::NOT_AN_ELEMENT, {text_}},
               [this] { Media_Helper::is_element_or_throw(nullptr, text_); });
  expect_error({TEC::INVALID_ELEMENT_TYPE, {text_}},
               [this] { Media_Helper::is_valid_element_type_or_throw(0, text_); });
}

TEST_P(TextInMessage, IsTheMessageOfALookup) {
  const std::map<std::string, std::string> map;
  expect_error({TEC::KEY_NOT_FOUND, {text_}},
               [&] { Media_Helper::string_from_map_or_throw_(std::string("key"), map, text_); });
}

TEST_P(TextInMessage, NamesAQueueInItsReport) {
  const Element queue = make_element("queue", text_.c_str());
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(queue.get()),
            text_ + " Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0");
}

}  // namespace
}  // namespace kel::tavren::tests
