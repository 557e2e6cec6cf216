// The depayloader and the payloader selected for each RTP stream.

#include <cstddef>
#include <map>
#include <optional>

#include "depayloader_references.h"
#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

struct Stream_Row {
  const char *caps;
  std::size_t tried;  // number of depayloaders that are tried
  const char *depayloader, *payloader;
};

// clang-format off
const Stream_Row streams[] = {
    {"application/x-rtp, media=video, payload=96, clock-rate=90000, encoding-name=H264, "
     "packetization-mode=(string)1, profile-level-id=(string)42e01f",
     1, "rtph264depay", "rtph264pay"},
    {"application/x-rtp, media=video, payload=26, clock-rate=90000, encoding-name=JPEG",
     2, "rtpjpegdepay", "rtpjpegpay"},
    {"application/x-rtp, media=video, payload=97, clock-rate=90000, encoding-name=JPEG",
     2, "rtpjpegdepay", "rtpjpegpay"},
    {"application/x-rtp, media=audio, payload=97, clock-rate=8000, encoding-name=PCMU",
     3, "rtppcmudepay", "rtppcmupay"},
    {"application/x-rtp, media=audio, payload=0, clock-rate=8000, encoding-name=PCMU",
     3, "rtppcmudepay", "rtppcmupay"},
    {"application/x-rtp, media=audio, payload=96, clock-rate=48000, encoding-name=MP4A-LATM, "
     "cpresent=(string)0, config=(string)40002320",
     4, "rtpmp4adepay", "rtpmp4apay"},
    {"application/x-rtp, media=video, payload=96, clock-rate=90000, encoding-name=MP4V-ES, "
     "profile-level-id=(string)1",
     5, "rtpmp4vdepay", "rtpmp4vpay"},
    {"application/x-rtp, media=audio, payload=96, clock-rate=48000, encoding-name=MPEG4-GENERIC, "
     "mode=AAC-hbr, streamtype=(string)5, sizelength=(string)13, indexlength=(string)3, "
     "indexdeltalength=(string)3, config=(string)1190",
     6, "rtpmp4gdepay", "rtpmp4gpay"},
    // identified by the payload type alone
    {"application/x-rtp, media=video, payload=26, clock-rate=90000",
     2, "rtpjpegdepay", "rtpjpegpay"},
    {"application/x-rtp, media=audio, payload=0, clock-rate=8000",
     3, "rtppcmudepay", "rtppcmupay"},
    // all structures must match
    {"application/x-rtp, media=video, clock-rate=90000, encoding-name=H264, payload=96; "
     "application/x-rtp, media=video, clock-rate=90000, encoding-name=H264, payload=97",
     1, "rtph264depay", "rtph264pay"},
};

const char *const refused[] = {
    "application/x-rtp, media=video, payload=96, clock-rate=90000, encoding-name=H265",
    "application/x-rtp, media=audio, payload=8, clock-rate=8000, encoding-name=PCMA",
    "application/x-rtp, media=application, payload=107, clock-rate=90000, "
    "encoding-name=VND.ONVIF.METADATA",
    // with a missing or an incorrect field
    "application/x-rtp",
    "application/x-rtp, clock-rate=90000, encoding-name=H264",
    "application/x-rtp, media=video, encoding-name=H264",
    "application/x-rtp, media=video, clock-rate=90000",
    "application/x-rtp, media=video, clock-rate=8000, encoding-name=H264",
    "application/x-rtp, media=audio, clock-rate=90000, encoding-name=H264",
    "application/x-rtp, media=video, clock-rate=90000, encoding-name=h264",
    "application/x-rtp, media=audio, clock-rate=48000, encoding-name=MPEG4-GENERIC",
    // two streams without a common depayloader
    "application/x-rtp, media=video, clock-rate=90000, encoding-name=H264; "
    "application/x-rtp, media=audio, clock-rate=8000, encoding-name=PCMU",
    // not RTP
    "video/x-h264, stream-format=byte-stream, alignment=au",
    "audio/x-mulaw, rate=8000, channels=1",
    "application/x-rtcp",
    "ANY",
};
// clang-format on

// Counts the references to the factories.
class SelectProxyElements : public testing::Test {
protected:
  // The new references to each depayloader's factory since the last call.
  void expect_taken(const Stream_Row &row) { expect_taken(row.tried); }
  void expect_taken(std::size_t tried) {
    std::size_t position = 0;
    for (const char *const name : depayloaders) {
      EXPECT_EQ(Depayloader_References::count(name) - seen(name), ++position <= tried ? 1U : 0U)
          << name;
      seen_[name] = Depayloader_References::count(name);
    }
  }

private:
  guint seen(const std::string &name) {
    const auto found = seen_.find(name);
    return found != seen_.end() ? found->second : references_.before(name);
  }

  Depayloader_References references_;
  std::map<std::string, guint> seen_;
};

// Removes a factory from the registry temporarily.
class Missing_Factory {
public:
  explicit Missing_Factory(const std::string &name) : factory_(find_factory(name)) {
    gst_registry_remove_feature(gst_registry_get(), GST_PLUGIN_FEATURE(factory_.get()));
  }
  ~Missing_Factory() {
    gst_registry_add_feature(gst_registry_get(), GST_PLUGIN_FEATURE(factory_.get()));
  }
  Missing_Factory(const Missing_Factory &) = delete;
  Missing_Factory &operator=(const Missing_Factory &) = delete;

private:
  Factory factory_;
};

TEST_F(SelectProxyElements, ReturnsTheFirstCompatibleDepayloader) {
  for (const Stream_Row &row : streams) {
    SCOPED_TRACE(row.caps);
    const Caps caps = make_caps(row.caps);
    const auto proxy = Media_Helper::select_proxy_elements(caps.get());
    EXPECT_EQ(proxy.first, row.depayloader);
    EXPECT_EQ(proxy.second, row.payloader);
    EXPECT_EQ(reference_count(caps.get()), 1);
    expect_taken(row);
  }
}

TEST_F(SelectProxyElements, ReturnsRegisteredPayloaders) {
  for (const Stream_Row &row : streams)
    EXPECT_NE(find_factory(row.payloader), nullptr) << row.payloader;
}

TEST_F(SelectProxyElements, RefusesCapsThatNoDepayloaderAccepts) {
  for (const char *const text : refused) {
    SCOPED_TRACE(text);
    const Caps caps = make_caps(text);
    ASSERT_TRUE(caps);
    expect_error({TEC::NO_PROXY_ELEMENTS_FOR_CAPS},
                 [&] { Media_Helper::select_proxy_elements(caps.get()); });
    EXPECT_EQ(reference_count(caps.get()), 1);
    expect_taken(6);
  }
}

TEST_F(SelectProxyElements, AcceptsCapsWithoutStructures) {
  // Caps without structures have no structure that does not match.
  const Caps caps(gst_caps_new_empty(), false);
  const auto proxy = Media_Helper::select_proxy_elements(caps.get());
  EXPECT_EQ(proxy.first, "rtph264depay");
  EXPECT_EQ(proxy.second, "rtph264pay");
  expect_taken(1);
}

TEST_F(SelectProxyElements, LeavesNullToTheFramework) {
  const Expected_Log log("assertion 'caps != NULL' failed");
  expect_error({TEC::NO_PROXY_ELEMENTS_FOR_CAPS},
               [] { Media_Helper::select_proxy_elements(nullptr); });
  EXPECT_EQ(log.count(), 6);
  expect_taken(6);
}

TEST_F(SelectProxyElements, FailsWithoutTheFirstDepayloaderForAllCaps) {
  const Missing_Factory missing("rtph264depay");
  const auto expect_failure = [](const char *text) {
    SCOPED_TRACE(text);
    const Caps caps = make_caps(text);
    expect_error({TEC::FACTORY_NOT_FOUND, {"rtph264depay"}},
                 [&] { Media_Helper::select_proxy_elements(caps.get()); });
    EXPECT_EQ(reference_count(caps.get()), 1);
  };
  for (const Stream_Row &row : streams)
    expect_failure(row.caps);
  for (const char *const text : refused)
    expect_failure(text);
}

TEST_F(SelectProxyElements, FailsOnlyIfItReachesAMissingDepayloader) {
  std::size_t position = 0;
  for (const char *const name : depayloaders) {
    SCOPED_TRACE(name);
    ++position;
    const Missing_Factory missing(name);
    for (const Stream_Row &row : streams) {
      SCOPED_TRACE(row.caps);
      const Caps caps = make_caps(row.caps);
      if (row.tried < position)
        EXPECT_EQ(Media_Helper::select_proxy_elements(caps.get()).first, row.depayloader);
      else
        expect_error({TEC::FACTORY_NOT_FOUND, {name}},
                     [&] { Media_Helper::select_proxy_elements(caps.get()); });
    }
  }
}

TEST_F(SelectProxyElements, WorksAgainWhenTheDepayloaderIsBack) {
  const Caps caps = make_caps(streams[0].caps);
  {
    const Missing_Factory missing("rtph264depay");
    EXPECT_THROW(Media_Helper::select_proxy_elements(caps.get()), std::runtime_error);
  }
  EXPECT_EQ(Media_Helper::select_proxy_elements(caps.get()).first, "rtph264depay");
}

}  // namespace
}  // namespace kel::tavren::tests
