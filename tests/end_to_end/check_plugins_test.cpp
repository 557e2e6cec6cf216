// Runs the program check_plugins as users do, with all plugins and with missing ones.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <gst/gst.h>
#include <gtest/gtest.h>

#include "child_process.h"
#include "media_files.h"

namespace kel::tavren::tests {

namespace {

// A system with selected plugins only.
class Plugin_Folder {
public:
  Plugin_Folder() {
    for (const char *plugin : {"app", "audioparsers", "avi", "coreelements", "isomp4", "jpeg",
                               "libav", "matroska", "mulaw", "rtp", "videoparsersbad"})
      add(plugin);
  }

  void remove(const std::string &plugin) { std::filesystem::remove(link(plugin)); }

  Child_Process::Environment environment() const {
    return {{"GST_REGISTRY", folder_.path("registry.bin")},
            {"GST_PLUGIN_SYSTEM_PATH", folder_.path(".")},
            {"GST_PLUGIN_SYSTEM_PATH_1_0", folder_.path(".")},
            {"GST_PLUGIN_PATH", ""},
            {"GST_PLUGIN_PATH_1_0", ""}};
  }

private:
  void add(const std::string &name) {
    GstPlugin *const plugin = gst_registry_find_plugin(gst_registry_get(), name.c_str());
    if (plugin == nullptr) throw std::runtime_error("no plugin " + name);
    std::filesystem::create_symlink(gst_plugin_get_filename(plugin), link(name));
    gst_object_unref(plugin);
  }
  std::string link(const std::string &plugin) const {
    return folder_.path("libgst" + plugin + ".so");
  }

  Media_Folder folder_;
};

// Returns the rows of the table by element, each as a list of words.
std::map<std::string, std::vector<std::string>> rows_of(const std::string &table) {
  std::map<std::string, std::vector<std::string>> rows;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string element;
    words >> element;
    for (std::string word; words >> word;)
      rows[element].push_back(word);
  }
  return rows;
}

std::string last_line(const std::string &text) {
  const std::size_t end = text.find_last_of('\n');
  return end == std::string::npos ? "" : text.substr(text.find_last_of('\n', end - 1) + 1);
}

TEST(CheckPlugins, FindsEveryElementThatTheLibraryUses) {
  const Outcome outcome = run({CHECK_PLUGINS});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(last_line(outcome.out), "30 elements, 0 required missing\n");
  const auto rows = rows_of(outcome.out);
  for (const std::string element : {"aacparse",     "appsink",      "avdec_h264",
                                    "avdec_mpeg4",  "avimux",       "h264parse",
                                    "identity",     "jpegdec",      "matroskademux",
                                    "matroskamux",  "mp4mux",       "mpeg4videoparse",
                                    "mulawdec",     "multiqueue",   "qtmux",
                                    "queue",        "rtph264depay", "rtph264pay",
                                    "rtpjpegdepay", "rtpjpegpay",   "rtpmp4adepay",
                                    "rtpmp4apay",   "rtpmp4gdepay", "rtpmp4gpay",
                                    "rtpmp4vdepay", "rtpmp4vpay",   "rtppcmudepay",
                                    "rtppcmupay",   "tee"}) {
    ASSERT_EQ(rows.count(element), 1U) << element;
    EXPECT_EQ(rows.at(element).front(), "present") << element;
  }
}

TEST(CheckPlugins, ListsThePluginAndThePurposeOfAnElement) {
  const auto rows = rows_of(run({CHECK_PLUGINS}).out);
  std::vector<std::string> row = rows.at("rtph264pay");
  ASSERT_EQ(row.size(), 8U);
  row.erase(row.begin() + 3);  // the version, which depends on the system
  EXPECT_EQ(row, (std::vector<std::string>{"present", "GstRtpH264Pay", "rtp",
                                           "gstreamer1.0-plugins-good", "pay", "H264,", "relay"}));
  EXPECT_EQ(rows.at("tee")[1], "GstTee");
  EXPECT_EQ(rows.at("appsink")[1], "GstAppSink");
}

TEST(CheckPlugins, DoesNotRequireElementsOfTheWiderSystem) {
  const Outcome outcome = run({CHECK_PLUGINS});
  EXPECT_EQ(rows_of(outcome.out).at("tavrenvideorate"),
            (std::vector<std::string>{"part", "of", "the", "wider", "system,", "not", "required",
                                      "-", "-", "-", "-", "adapt", "rate", "of", "H264"}));
}

TEST(CheckPlugins, ReportsMissingElementsWithTheirPackage) {
  Plugin_Folder plugins;
  plugins.remove("libav");
  const Outcome outcome = run({CHECK_PLUGINS}, plugins.environment());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "check_plugins: error 0x151D0: required elements cannot be made: "
                         "avdec_h264, avdec_mpeg4; install gstreamer1.0-libav\n");
  const auto rows = rows_of(outcome.out);
  EXPECT_EQ(
      rows.at("avdec_h264"),
      (std::vector<std::string>{"missing", "-", "-", "-", "gstreamer1.0-libav", "decode", "H264"}));
  EXPECT_EQ(rows.at("h264parse").front(), "present");
  EXPECT_EQ(last_line(outcome.out), "30 elements, 2 required missing\n");
}

// No depayloader is registered, so there are no caps to compare, but the element is still listed.
TEST(CheckPlugins, ReportsAMissingDepayloader) {
  Plugin_Folder plugins;
  plugins.remove("rtp");
  const Outcome outcome = run({CHECK_PLUGINS}, plugins.environment());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "check_plugins: error 0x151D0: required elements cannot be made: "
                         "rtph264depay, rtph264pay, rtpjpegpay, rtpmp4apay, rtpmp4vpay, "
                         "rtppcmupay; install gstreamer1.0-plugins-good\n");
}

TEST(CheckPlugins, DistinguishesABrokenPluginFromAMissingOne) {
  Plugin_Folder plugins;
  Child_Process::Environment environment = plugins.environment();
  ASSERT_EQ(run({CHECK_PLUGINS}, environment).status, 0);
  plugins.remove("matroska");
  environment["GST_REGISTRY_UPDATE"] = "no";
  const Outcome outcome = run({CHECK_PLUGINS}, environment);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("check_plugins: error 0x151E0: required elements cannot be made: "
                             "matroskademux, matroskamux; install gstreamer1.0-plugins-good\n"),
            std::string::npos)
      << outcome.err;
  const auto rows = rows_of(outcome.out);
  EXPECT_EQ(rows.at("matroskamux")[0] + rows.at("matroskamux")[1] + rows.at("matroskamux")[2],
            "doesnotload");
}

// Returns the headings of the sections on codes in the page on errors, with number and name.
std::vector<std::string> headings_of_codes() {
  std::vector<std::string> headings;
  std::ifstream page(ERROR_PAGE);
  for (std::string line; std::getline(page, line);)
    if (line.rfind("### 0x", 0) == 0) headings.push_back(line.substr(4));
  return headings;
}

TEST(CheckPlugins, ExplainsACodeAsPlainText) {
  const Outcome outcome = run({CHECK_PLUGINS, "--explain", "0x15080"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "0x15080 NOT_A_MULTIQUEUE_PAD_NAME\n"
            "\n"
            "Decimal 86144. Thrown by `get_corresponding_multiqueue_pad` and "
            "`request_new_multiqueue_pads`.\n"
            "\n"
            "    Pad has wrong naming scheme. Doesn't appear to be a multiqueue pad.\n"
            "\n"
            "The name of a source pad does not begin with \"src\", or the name of a sink pad does "
            "not begin with\n\"sink\".\n"
            "\n"
            "Look at the element that the pad belongs to: it is not a multiqueue.\n"
            "\n"
            "If `request_new_multiqueue_pads` threw it, the requested sink pad still exists: see\n"
            "0x15100.\n");
}

TEST(CheckPlugins, ExplainsEveryCodeWithoutAnyPlugin) {
  const Media_Folder empty;
  const Child_Process::Environment environment = {{"GST_REGISTRY", empty.path("registry.bin")},
                                                  {"GST_PLUGIN_SYSTEM_PATH", empty.path(".")},
                                                  {"GST_PLUGIN_SYSTEM_PATH_1_0", empty.path(".")}};
  const std::vector<std::string> headings = headings_of_codes();
  ASSERT_GT(headings.size(), 40U);
  for (const std::string &heading : headings) {
    const Outcome outcome =
        run({CHECK_PLUGINS, "--explain", heading.substr(0, heading.find(' '))}, environment);
    EXPECT_EQ(outcome.status, 0) << heading;
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), heading);
    EXPECT_TRUE(outcome.out.find("\n\nLook ") != std::string::npos ||
                outcome.out.find("\n\nCheck ") != std::string::npos)
        << heading;
    EXPECT_EQ(outcome.out.find("###"), std::string::npos) << heading;
  }
}

TEST(CheckPlugins, AcceptsACodeInEverySpelling) {
  const std::string explanation = run({CHECK_PLUGINS, "--explain", "0x152E0"}).out;
  EXPECT_EQ(explanation.rfind("0x152E0 STATE_CHANGE_FAILED\n", 0), 0U);
  for (const std::string code : {"0x152e0", "0X152E0", "152E0", "152e0", "86752",
                                 "STATE_CHANGE_FAILED", "state_change_failed"})
    EXPECT_EQ(run({CHECK_PLUGINS, "--explain", code}).out, explanation) << code;
}

TEST(CheckPlugins, ReportsAnUnknownCode) {
  for (const std::string code : {"0x15011", "0x152E", "STATE_CHANGE", ""}) {
    const Outcome outcome = run({CHECK_PLUGINS, "--explain=" + code});
    EXPECT_EQ(outcome.status, 1) << code;
    EXPECT_EQ(outcome.out, "") << code;
    EXPECT_EQ(outcome.err, "check_plugins: error the library has no error code \"" + code +
                               "\"; give a number, such as 0x152E0, or a name\n");
  }
}

}  // namespace

}  // namespace kel::tavren::tests
