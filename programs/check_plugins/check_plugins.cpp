// Lists the elements that the library can name, whether they can be created, and their packages.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <set>

#include <tavren/capture/media_helper.h>

#include "check_plugins/error_explanation.h"
#include "command_line/program.h"
#include "command_line/text_columns.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
using capture::MediaType;

namespace {

using Error = Backend_Error<std::runtime_error>;
using Text = std::unique_ptr<char, Emancipator<char>>;
template <typename Object>
using Owned = std::unique_ptr<Object, decltype(&gst_object_unref)>;

// The purposes of each element, by its name.
using Elements = std::map<std::string, std::vector<std::string>>;

void add_purpose(Elements &elements, const std::string &name, const std::string &purpose) {
  std::vector<std::string> &purposes = elements[name];
  if (std::find(purposes.begin(), purposes.end(), purpose) == purposes.end())
    purposes.push_back(purpose);
}

// Adds the selected element, if the library's table has one for the file or media type.
template <typename Select>
void add_selected(Elements &elements, const std::string &purpose, Select &&select) {
  try {
    add_purpose(elements, select(), purpose);
  } catch (const Tavren_Error<std::exception> &error) {
    if (error.code() != TEC::KEY_NOT_FOUND) throw;
  }
}

void add_elements_of_media_types(Elements &elements) {
  const struct {
    const char *purpose;
    std::string (*select)(MediaType);
  } selectors[] = {
      {"parse ", Media_Helper::select_parser},
      {"decode ", Media_Helper::select_decoder},
      {"pay ", Media_Helper::select_payloader},
      {"adapt rate of ", Media_Helper::select_video_rate},
  };
  for (const auto &[purpose, select] : selectors)
    for (int type = capture::JPEG; type <= capture::UNKNOWN; ++type) {
      const auto media_type = static_cast<MediaType>(type);
      add_selected(elements, purpose + Media_Helper::get_media_type_string(media_type),
                   [select = select, media_type] { return select(media_type); });
    }
}

void add_elements_of_files(Elements &elements) {
  for (const std::string extension : {".mkv", ".mp4", ".avi", ".mov"}) {
    add_selected(elements, "mux " + extension,
                 [&] { return Media_Helper::select_muxer(extension); });
    add_selected(elements, "demux " + extension,
                 [&] { return Media_Helper::select_demuxer(extension); });
  }
}

// Returns the factory's name from the message of a failed lookup: the text in double quotes.
std::string missing_factory(const std::exception &error) {
  const std::string message = error.what();
  const std::size_t begin = message.find('"') + 1;
  return message.substr(begin, message.rfind('"') - begin);
}

// Adds the elements that relay streams with the given RTP caps, if there are any. If a depayloader
// is missing, each selection that reaches it fails: then adds the missing element.
void add_relay_pair(Elements &elements, const GstCaps *caps) {
  try {
    const auto [depayloader, payloader] = Media_Helper::select_proxy_elements(caps);
    add_purpose(elements, depayloader, "relay");
    add_purpose(elements, payloader, "relay");
  } catch (const Error &error) {
    if (error.code() == TEC::FACTORY_NOT_FOUND)
      add_purpose(elements, missing_factory(error), "relay");
    else if (error.code() != TEC::NO_PROXY_ELEMENTS_FOR_CAPS)
      throw;
  }
}

void add_relay_pairs_of(Elements &elements, GstElementFactory *depayloader) {
  const GList *templates = gst_element_factory_get_static_pad_templates(depayloader);
  for (const GList *node = templates; node != nullptr; node = node->next) {
    auto *const pad_template = static_cast<GstStaticPadTemplate *>(node->data);
    if (pad_template->direction != GST_PAD_SINK) continue;
    const boost::intrusive_ptr<GstCaps> caps(gst_static_pad_template_get_caps(pad_template), false);
    for (guint i = 0; i < gst_caps_get_size(caps.get()); ++i) {
      const boost::intrusive_ptr<GstCaps> one(gst_caps_copy_nth(caps.get(), i), false);
      add_relay_pair(elements, one.get());
    }
  }
}

// Tries the caps of all installed depayloaders, and caps that none accepts: for these, the library
// looks up all its depayloaders.
void add_elements_of_relays(Elements &elements) {
  const std::unique_ptr<GList, decltype(&gst_plugin_feature_list_free)> depayloaders(
      gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DEPAYLOADER, GST_RANK_NONE),
      gst_plugin_feature_list_free);
  for (const GList *node = depayloaders.get(); node != nullptr; node = node->next)
    add_relay_pairs_of(elements, GST_ELEMENT_FACTORY(node->data));
  const boost::intrusive_ptr<GstCaps> unknown(gst_caps_new_empty_simple("application/x-rtp"),
                                              false);
  add_relay_pair(elements, unknown.get());
}

Elements elements_of_the_library() {
  Elements elements;
  add_elements_of_media_types(elements);
  add_elements_of_files(elements);
  add_elements_of_relays(elements);
  add_purpose(elements, "tee", "search, branches");
  add_purpose(elements, "appsink", "search");
  add_purpose(elements, "multiqueue", "pad pairs");
  add_purpose(elements, "queue", "fill report");
  return elements;
}

// Returns the Debian package of an element that is not installed; "-" if it is unknown.
std::string package_to_install(const std::string &element) {
  // clang-format off
  const std::map<std::string, std::string> packages = {
      {"aacparse",        "gstreamer1.0-plugins-good"},
      {"appsink",         "gstreamer1.0-plugins-base"},
      {"avdec_h264",      "gstreamer1.0-libav"},
      {"avdec_mpeg4",     "gstreamer1.0-libav"},
      {"avimux",          "gstreamer1.0-plugins-good"},
      {"h264parse",       "gstreamer1.0-plugins-bad"},
      {"identity",        "libgstreamer1.0-0"},
      {"jpegdec",         "gstreamer1.0-plugins-good"},
      {"matroskademux",   "gstreamer1.0-plugins-good"},
      {"matroskamux",     "gstreamer1.0-plugins-good"},
      {"mp4mux",          "gstreamer1.0-plugins-good"},
      {"mpeg4videoparse", "gstreamer1.0-plugins-bad"},
      {"mulawdec",        "gstreamer1.0-plugins-good"},
      {"multiqueue",      "libgstreamer1.0-0"},
      {"qtmux",           "gstreamer1.0-plugins-good"},
      {"queue",           "libgstreamer1.0-0"},
      {"tee",             "libgstreamer1.0-0"},
  };
  // clang-format on
  const auto row = packages.find(element);
  if (row != packages.end()) return row->second;
  return element.rfind("rtp", 0) == 0 ? "gstreamer1.0-plugins-good" : "-";
}

// Returns the Debian package that contains a file; "-" if there is none.
std::string package_of_file(const std::string &file) {
  // The package manager knows only the path without symbolic links.
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(file.c_str(), nullptr),
                                                         std::free);
  if (!real) return "-";
  const char *const command[] = {"dpkg-query", "--search", real.get(), nullptr};
  char *answer = nullptr;
  const gboolean ran =
      g_spawn_sync(nullptr, const_cast<char **>(command), nullptr,
                   static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL),
                   nullptr, nullptr, &answer, nullptr, nullptr, nullptr);
  const Text owned(answer);
  const std::string text = ran ? answer : "";
  return text.empty() ? "-" : text.substr(0, text.find(':'));
}

// Queries the package of each file only once, because the queries take most of the time.
class Packages_Of_Files {
public:
  const std::string &operator[](const std::string &file) {
    const auto known = packages_.find(file);
    if (known != packages_.end()) return known->second;
    return packages_[file] = package_of_file(file);
  }

private:
  std::map<std::string, std::string> packages_;
};

// The cells of an element's row.
struct Finding {
  std::string state = "present";
  std::string type = "-";
  std::string plugin = "-";
  std::string version = "-";
  std::string package = "-";
  std::optional<TEC::Tavren_Error_Code> failure = std::nullopt;  // why it cannot be created
};

void describe_plugin(Finding &finding, const std::string &name, Packages_Of_Files &packages) {
  const Owned<GstElementFactory> factory(Media_Helper::gst_element_factory_find_or_throw(name),
                                         gst_object_unref);
  const Owned<GstPlugin> plugin(gst_plugin_feature_get_plugin(GST_PLUGIN_FEATURE(factory.get())),
                                gst_object_unref);
  if (!plugin) return;
  finding.plugin = gst_plugin_get_name(plugin.get());
  finding.version = gst_plugin_get_version(plugin.get());
  // Elements that are built into the framework have no file.
  if (const char *const file = gst_plugin_get_filename(plugin.get()))
    finding.package = packages[file];
}

Finding examine(const std::string &name, Packages_Of_Files &packages) {
  Finding finding;
  try {
    describe_plugin(finding, name, packages);
    finding.type = g_type_name(Media_Helper::get_element_type(name));
  } catch (const Error &error) {
    finding.failure = error.code();
    finding.state = error.code() == TEC::FACTORY_NOT_FOUND ? "missing" : "does not load";
    if (finding.package == "-") finding.package = package_to_install(name);
  }
  return finding;
}

std::string join(const std::vector<std::string> &words) {
  std::string text;
  for (const std::string &word : words)
    text += (text.empty() ? "" : ", ") + word;
  return text;
}

// The required elements that cannot be created, and the packages that contain them.
struct Shortage {
  std::vector<std::string> elements;
  std::set<std::string> packages;
  std::optional<TEC::Tavren_Error_Code> code = std::nullopt;  // of the first element

  void add(const std::string &element, const Finding &finding) {
    elements.push_back(element);
    if (finding.package != "-") packages.insert(finding.package);
    if (!code) code = finding.failure;
  }

  void throw_if_any() const {
    if (!code) return;
    const std::string advice =
        packages.empty() ? "" : "; install " + join({packages.begin(), packages.end()});
    throw Error(*code, "required elements cannot be made: " + join(elements) + advice);
  }
};

void check() {
  // This element is part of the wider system, which need not be installed.
  const std::string wider = Media_Helper::select_video_rate(capture::H264);
  Packages_Of_Files packages;
  Shortage shortage;
  std::vector<Text_Row> rows = {
      {"ELEMENT", "STATE", "TYPE", "PLUGIN", "VERSION", "PACKAGE", "FOR"}};
  for (const auto &[name, purposes] : elements_of_the_library()) {
    Finding finding = examine(name, packages);
    if (finding.failure && name == wider)
      finding.state = "part of the wider system, not required";
    else if (finding.failure)
      shortage.add(name, finding);
    rows.push_back({name, finding.state, finding.type, finding.plugin, finding.version,
                    finding.package, join(purposes)});
  }
  print_columns(std::cout, rows);
  std::cout << rows.size() - 1 << " elements, " << shortage.elements.size() << " required missing"
            << std::endl;
  shortage.throw_if_any();
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Text_Option code;
  const std::vector<GOptionEntry> options = {
      {"explain", 0, 0, G_OPTION_ARG_STRING, code.target(),
       "explain an error code of the library, such as 0x152E0, and exit", "CODE"}};
  return run_program(
      argc, argv, "Lists the elements that the library can name, and whether they are installed.",
      options, [&code] {
        if (code.given())
          std::cout << explain_error(code.value_or("")) << std::flush;
        else
          check();
      });
}
