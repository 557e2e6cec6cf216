// Lookup tables are created in every call and destroyed before it returns.

#include <functional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "elements.h"
#include "live_blocks.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

thread_local long allocations = 0;

// Counts all allocations of C++ code on this thread.
bool count_allocation() noexcept {
  ++allocations;
  return false;
}

struct Table {
  const char *name;
  long rows;
  std::function<void()> look_up;
};

void PrintTo(const Table &table, std::ostream *out) {
  *out << table.name;
}

class LookupTable : public testing::TestWithParam<Table> {
protected:
  LookupTable() { fail_allocations_when(count_allocation); }
  ~LookupTable() override { fail_allocations_when(nullptr); }
};

// A map allocates each row, so a table that is kept from an earlier call would not allocate
// anything.
TEST_P(LookupTable, IsCreatedInEveryCall) {
  const Table &table = GetParam();
  long first = 0;
  for (int call = 1; call <= 3; ++call) {
    const long blocks_before = live_blocks();
    allocations = 0;
    table.look_up();
    const long made = allocations;
    EXPECT_EQ(live_blocks(), blocks_before) << "call " << call;
    EXPECT_GE(made, table.rows) << "call " << call;
    if (call == 1) first = made;
    EXPECT_EQ(made, first) << "call " << call;
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, LookupTable,
    testing::Values(
        Table{"get_media_type", 9,
              [] { Media_Helper::get_media_type(make_caps("image/jpeg").get()); }},
        Table{"get_media_type_string", 9,
              [] { Media_Helper::get_media_type_string(capture::JPEG); }},
        Table{"select_muxer", 4, [] { Media_Helper::select_muxer("a.mkv"); }},
        Table{"select_demuxer", 1, [] { Media_Helper::select_demuxer("a.mkv"); }},
        Table{"select_parser", 5, [] { Media_Helper::select_parser(capture::JPEG); }},
        Table{"select_decoder", 4, [] { Media_Helper::select_decoder(capture::JPEG); }},
        Table{"select_payloader", 5, [] { Media_Helper::select_payloader(capture::JPEG); }},
        Table{"select_video_rate", 3, [] { Media_Helper::select_video_rate(capture::JPEG); }},
        Table{"gst_discoverer_result_to_string", 6,
              [] { Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_OK); }},
        Table{"gst_state_to_string", 5, [] { Media_Helper::gst_state_to_string(GST_STATE_NULL); }},
        Table{"gst_state_change_to_string", 6,
              [] { Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_READY); }},
        Table{"gst_enum_message_of_a_change", 4,
              [] { Media_Helper::gst_enum_message(GST_STATE_CHANGE_ASYNC); }},
        Table{"gst_enum_message_of_a_link", 7,
              [] { Media_Helper::gst_enum_message(GST_PAD_LINK_OK); }},
        Table{"gst_enum_message_of_a_state", 4,
              [] { Media_Helper::gst_enum_message(GST_STATE_NULL); }},
        Table{"gst_enum_message_of_a_message", 36,
              [] { Media_Helper::gst_enum_message(GST_MESSAGE_EOS); }}),
    [](const testing::TestParamInfo<Table> &table) { return std::string(table.param.name); });

}  // namespace
}  // namespace kel::tavren::tests
