// The elements selected for each file name and each kind of media.

#include <limits>
#include <memory>

#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::MediaType;

struct File_Row {
  const char *name;
  const char *muxer;    // null: none
  const char *demuxer;  // null: none
};

// clang-format off
const File_Row files[] = {
    // supported extensions
    {"cam1.mkv",                           "matroskamux", "matroskademux"},
    {"x.mp4",                              "mp4mux",      nullptr},
    {"x.avi",                              "avimux",      nullptr},
    {"x.mov",                              "qtmux",       nullptr},
    {"x.webm",                             nullptr,       nullptr},
    {"x.ts",                               nullptr,       nullptr},
    // only the last dot counts
    {"a.tar.mov",                          "qtmux",       nullptr},
    {"a.mkv.mp4",                          "mp4mux",      nullptr},
    {"a.mkv.part",                         nullptr,       nullptr},
    {"a..mkv",                             "matroskamux", "matroskademux"},
    {"a.mkv.",                             nullptr,       nullptr},
    // comparison is exact
    {"clip.MP4",                           nullptr,       nullptr},
    {"clip.Mkv",                           nullptr,       nullptr},
    {"clip.mk",                            nullptr,       nullptr},
    {"clip.mkvx",                          nullptr,       nullptr},
    {"clip.mkv ",                          nullptr,       nullptr},
    {"clip. mkv",                          nullptr,       nullptr},
    // no extension
    {"",                                   nullptr,       nullptr},
    {"mkv",                                nullptr,       nullptr},
    {"clip",                               nullptr,       nullptr},
    {"clip.",                              nullptr,       nullptr},
    {".",                                  nullptr,       nullptr},
    {"..",                                 nullptr,       nullptr},
    {"...",                                nullptr,       nullptr},
    {"/",                                  nullptr,       nullptr},
    // a name with a leading dot consists of an extension only
    {".mkv",                               "matroskamux", "matroskademux"},
    {"..mkv",                              "matroskamux", "matroskademux"},
    {".mp4",                               "mp4mux",      nullptr},
    {".avi",                               "avimux",      nullptr},
    {".mov",                               "qtmux",       nullptr},
    // only the last path component counts
    {"/var/recordings/cam1.mkv",           "matroskamux", "matroskademux"},
    {"./cam1.mkv",                         "matroskamux", "matroskademux"},
    {"../cam1.mkv",                        "matroskamux", "matroskademux"},
    {"dir/.mkv",                           "matroskamux", "matroskademux"},
    {"/.mkv",                              "matroskamux", "matroskademux"},
    {"dir.mp4/cam1.mkv",                   "matroskamux", "matroskademux"},
    {"dir//cam1.mkv",                      "matroskamux", "matroskademux"},
    {"dir.mkv/file",                       nullptr,       nullptr},
    {"x.mkv/",                             nullptr,       nullptr},
    {"x.mkv//",                            nullptr,       nullptr},
    {"x.mkv/.",                            nullptr,       nullptr},
    {"x.mkv/..",                           nullptr,       nullptr},
    {".mkv/",                              nullptr,       nullptr},
    // long names, blanks, non-ASCII bytes
    {"front-door-2024-05-17T12-00-00.mkv", "matroskamux", "matroskademux"},
    {"front-door-2024-05-17T12-00-00.mov", "qtmux",       nullptr},
    {"a-name-with-a-long.extension-of-its-own-1234567890", nullptr, nullptr},
    {"front door/cam 1.mkv",               "matroskamux", "matroskademux"},
    {" .mkv",                              "matroskamux", "matroskademux"},
    {"T\xc3\xbcr/K\xc3\xbc\x63he \xe2\x80\x93 1.mkv", "matroskamux", "matroskademux"},
    {"clip.\xc3\xbc",                      nullptr,       nullptr},
    {"not utf-8 \xff\xfe.mp4",             "mp4mux",      nullptr},
};
// clang-format on

using Select_By_Name = std::string (*)(const std::string &);

void expect_by_name(Select_By_Name select, const char *name, const char *factory,
                    const char *error) {
  SCOPED_TRACE(name);
  if (factory != nullptr)
    EXPECT_EQ(select(name), factory);
  else
    expect_error({TEC::KEY_NOT_FOUND, {error}}, [&] { select(name); });
}

TEST(MuxerSelection, DependsOnTheFileExtension) {
  for (const File_Row &row : files)
    expect_by_name(Media_Helper::select_muxer, row.name, row.muxer,
                   "Unknown file extension : could not create muxer");
}

TEST(DemuxerSelection, DependsOnTheFileExtension) {
  for (const File_Row &row : files)
    expect_by_name(Media_Helper::select_demuxer, row.name, row.demuxer,
                   "Unknown file extension : could not create demuxer");
}

struct Kind_Row {
  int type;
  const char *parser, *decoder, *payloader, *video_rate;  // null: none
};

// clang-format off
const Kind_Row kinds[] = {
    {0, "identity",        "jpegdec",     "rtpjpegpay", "identity"},
    {1, "h264parse",       "avdec_h264",  "rtph264pay", "tavrenvideorate"},
    {2, "aacparse",        nullptr,       "rtpmp4apay", nullptr},
    {3, "mpeg4videoparse", "avdec_mpeg4", "rtpmp4vpay", "identity"},
    {4, nullptr,           nullptr,       nullptr,      nullptr},
    {5, nullptr,           nullptr,       nullptr,      nullptr},
    {6, nullptr,           nullptr,       nullptr,      nullptr},
    {7, nullptr,           nullptr,       nullptr,      nullptr},
    {8, "identity",        "mulawdec",    "rtppcmupay", nullptr},
    {9, nullptr,           nullptr,       nullptr,      nullptr},
    // not an enumerator
    {10,                              nullptr, nullptr, nullptr, nullptr},
    {-1,                              nullptr, nullptr, nullptr, nullptr},
    {std::numeric_limits<int>::min(), nullptr, nullptr, nullptr, nullptr},
    {std::numeric_limits<int>::max(), nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

using Select_By_Kind = std::string (*)(MediaType);

void expect_by_kind(Select_By_Kind select, const char *const Kind_Row::*column, const char *error) {
  for (const Kind_Row &row : kinds) {
    SCOPED_TRACE(row.type);
    const auto type = static_cast<MediaType>(row.type);
    const char *const factory = row.*column;
    if (factory != nullptr)
      EXPECT_EQ(select(type), factory);
    else
      expect_error({TEC::KEY_NOT_FOUND, {error}}, [&] { select(type); });
  }
}

TEST(ParserSelection, DependsOnTheMediaType) {
  expect_by_kind(Media_Helper::select_parser, &Kind_Row::parser,
                 "Unknown video format : could not create video parser");
}

// The decoder and the frame-rate element use the parser's error text.
TEST(DecoderSelection, DependsOnTheMediaType) {
  expect_by_kind(Media_Helper::select_decoder, &Kind_Row::decoder,
                 "Unknown video format : could not create video parser");
}

TEST(VideoRateSelection, DependsOnTheMediaType) {
  expect_by_kind(Media_Helper::select_video_rate, &Kind_Row::video_rate,
                 "Unknown video format : could not create video parser");
}

TEST(PayloaderSelection, DependsOnTheMediaType) {
  expect_by_kind(Media_Helper::select_payloader, &Kind_Row::payloader,
                 "Unsupported format : could not select payloader");
}

// The names refer to installed plugins, except the frame-rate element, which another project
// provides.
TEST(SelectedElements, AreInTheRegistry) {
  const auto expect_known = [](const char *factory) {
    if (factory == nullptr || std::string(factory) == "tavrenvideorate") return;
    const std::unique_ptr<GstElementFactory, decltype(&gst_object_unref)> found(
        gst_element_factory_find(factory), gst_object_unref);
    EXPECT_NE(found, nullptr) << factory;
  };
  for (const File_Row &row : files) {
    expect_known(row.muxer);
    expect_known(row.demuxer);
  }
  for (const Kind_Row &row : kinds)
    for (const char *const factory : {row.parser, row.decoder, row.payloader, row.video_rate})
      expect_known(factory);
}

}  // namespace
}  // namespace kel::tavren::tests
