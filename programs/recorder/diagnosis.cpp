#include "diagnosis.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <glib/gstdio.h>
#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/time_text.h"
#include "file_names.h"
#include "pipeline_graph.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
namespace fs = std::filesystem;

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;
using Iterator = std::unique_ptr<GstIterator, Emancipator<GstIterator>>;

constexpr std::size_t messages_kept = 50;

// Calls a function for each object of an iterator, without C frames that an exception could cross.
// The iteration ends if the pipeline changes meanwhile.
template <typename Object, typename Action>
void for_each(const Iterator &iterator, Action action) {
  GValue item = G_VALUE_INIT;
  const std::unique_ptr<GValue, decltype(&g_value_unset)> owned(&item, g_value_unset);
  while (iterator && gst_iterator_next(iterator.get(), &item) == GST_ITERATOR_OK) {
    action(static_cast<Object *>(g_value_get_object(&item)));
    g_value_reset(&item);
  }
}

std::string path_of(gpointer object) {
  return Text(gst_object_get_path_string(GST_OBJECT(object))).get();
}

std::string describe_failure(const std::exception_ptr &failure) {
  const std::string code = failure_code(failure);
  return "time: " + in_utc(g_get_real_time()) + "\ncode: " + (code.empty() ? "none" : code) +
         "\ntext: " + failure_text(failure) + '\n';
}

bool has_levels(GstElement *element) {
  const auto levels = {"current-level-buffers", "current-level-bytes", "current-level-time"};
  return std::all_of(levels.begin(), levels.end(), [element](const char *level) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(element), level) != nullptr;
  });
}

std::string describe_queues(GstBin *pipeline) {
  std::string text;
  for_each<GstElement>(Iterator(gst_bin_iterate_recurse(pipeline)), [&](GstElement *element) {
    if (has_levels(element))
      text += path_of(element) + ": " + Media_Helper::generate_queue_stats_report(element) + '\n';
  });
  return text;
}

std::string describe_caps(GstBin *pipeline) {
  std::string text;
  for_each<GstElement>(Iterator(gst_bin_iterate_recurse(pipeline)), [&](GstElement *element) {
    for_each<GstPad>(Iterator(gst_element_iterate_src_pads(element)), [&](GstPad *pad) {
      const boost::intrusive_ptr<GstCaps> caps(gst_pad_get_current_caps(pad), false);
      if (caps) text += path_of(pad) + ": " + Text(gst_caps_to_string(caps.get())).get() + '\n';
    });
  });
  return text;
}

// The plugin of an element, with its version: rtsp 1.22.0 (Debian).
std::string plugin_of(GstElement *element) {
  GstElementFactory *const factory = gst_element_get_factory(element);
  if (factory == nullptr) return "";
  const std::unique_ptr<GstPlugin, decltype(&gst_object_unref)> plugin(
      gst_plugin_feature_get_plugin(GST_PLUGIN_FEATURE(factory)), gst_object_unref);
  if (!plugin) return "";
  return std::string(gst_plugin_get_name(plugin.get())) + ' ' +
         gst_plugin_get_version(plugin.get()) + " (" + gst_plugin_get_package(plugin.get()) + ')';
}

std::string describe_plugins(GstBin *pipeline) {
  std::set<std::string> plugins;
  for_each<GstElement>(Iterator(gst_bin_iterate_recurse(pipeline)),
                       [&](GstElement *element) { plugins.insert(plugin_of(element)); });
  plugins.erase("");
  std::string text = std::string(Text(gst_version_string()).get()) + '\n';
  for (const std::string &plugin : plugins)
    text += plugin + '\n';
  return text;
}

void replace_all(std::string &text, const std::string &secret) {
  if (secret.empty()) return;
  const std::string concealed = "***";
  for (std::size_t at = text.find(secret); at != std::string::npos;
       at = text.find(secret, at + concealed.size()))
    text.replace(at, secret.size(), concealed);
}

// Escapes a text as GStreamer does in the text form of a structure.
std::string as_structure_text(const std::string &text) {
  GValue value = G_VALUE_INIT;
  g_value_init(&value, G_TYPE_STRING);
  const std::unique_ptr<GValue, decltype(&g_value_unset)> owned(&value, g_value_unset);
  g_value_set_string(&value, text.c_str());
  const std::string escaped = Text(gst_value_serialize(&value)).get();
  const bool is_quoted = escaped.size() > 1 && escaped.front() == '"';
  return is_quoted ? escaped.substr(1, escaped.size() - 2) : escaped;
}

// Conceals the password in all forms in which it may appear, and passwords in the queries of
// addresses.
std::string without_password(std::string text, const Camera_Address &address) {
  const std::string &password = address.password;
  const std::string login = address.user + ':' + password;
  if (!password.empty()) {
    replace_all(
        text,
        Text(g_base64_encode(reinterpret_cast<const guchar *>(login.data()), login.size())).get());
    replace_all(text, Text(g_uri_escape_string(password.c_str(), nullptr, FALSE)).get());
    replace_all(text, as_structure_text(password));
    replace_all(text, password);
  }
  static const std::regex in_query(R"(((password|passwd|pass|pwd)\\?=)(\\.|[^&;\\\s"'])+)",
                                   std::regex::icase);
  return std::regex_replace(text, in_query, "$1***");
}

std::string details_of(GstMessage *message) {
  const GstMessageType type = GST_MESSAGE_TYPE(message);
  if (type == GST_MESSAGE_ERROR || type == GST_MESSAGE_WARNING) return Bus_Error(message).what();
  const GstStructure *const structure = gst_message_get_structure(message);
  return structure != nullptr ? Text(gst_structure_to_string(structure)).get() : "";
}

// The part of a folder's name after the camera's name.
const std::regex &time_ending() {
  static const std::regex ending(std::string(time_ending_pattern) + '$');
  return ending;
}

std::string time_in(const fs::path &folder) {
  const std::string name = folder.filename().string();
  std::smatch match;
  return std::regex_search(name, match, time_ending()) ? match.str() : "";
}

std::string as_file_name(std::string name) {
  for (char &character : name)
    if (!g_ascii_isalnum(character) && character != '.' && character != '_') character = '_';
  return name;
}

void write_file(const std::string &path, const std::string &text) {
  GError *error = nullptr;
  if (g_file_set_contents(path.c_str(), text.data(), static_cast<gssize>(text.size()), &error))
    return;
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  throw std::runtime_error(error->message);
}

}  // namespace

void Bus_History::add(GstMessage *message) {
  const GstMessageType type = GST_MESSAGE_TYPE(message);
  const bool is_frequent =
      (type & (GST_MESSAGE_APPLICATION | GST_MESSAGE_STATE_CHANGED | GST_MESSAGE_STREAM_STATUS)) !=
      0;
  if (is_frequent) return;
  std::string line = in_utc(g_get_real_time()) + ' ' + GST_MESSAGE_TYPE_NAME(message);
  if (GST_MESSAGE_SRC(message) != nullptr) line += " from " + path_of(GST_MESSAGE_SRC(message));
  if (const std::string details = details_of(message); !details.empty()) line += ": " + details;
  lines_.push_back(std::move(line));
  if (lines_.size() > messages_kept) lines_.pop_front();
}

std::string Bus_History::text() const {
  std::string text;
  for (const std::string &line : lines_)
    text += line + '\n';
  return text;
}

Diagnosis diagnose(GstBin *pipeline, const std::exception_ptr &failure,
                   const Bus_History &history) {
  return {{"failure.txt", describe_failure(failure)}, {"messages.txt", history.text()},
          {"graph.dot", describe_graph(pipeline)},    {"queues.txt", describe_queues(pipeline)},
          {"caps.txt", describe_caps(pipeline)},      {"plugins.txt", describe_plugins(pipeline)}};
}

Diagnosis_Folder::Diagnosis_Folder(std::string path, unsigned int limit)
    : path_(std::move(path)), limit_(limit) {
  std::error_code error;
  fs::create_directories(path_, error);
  if (!error && g_access(path_.c_str(), W_OK) == 0) return;
  throw std::runtime_error("cannot write diagnoses into " + path_ + ": " +
                           (error ? error.message() : g_strerror(errno)));
}

std::string Diagnosis_Folder::write(const std::string &name, const Diagnosis &diagnosis,
                                    const Camera_Address &address) {
  const std::lock_guard lock(mutex_);
  std::string folder = make_folder(name);
  for (const auto &[file, text] : diagnosis)
    write_file((fs::path(folder) / file).string(), without_password(text, address));
  remove_oldest();
  return folder;
}

std::string Diagnosis_Folder::make_folder(const std::string &name) const {
  const std::string stem = path_ + '/' + as_file_name(name) + '-' + utc_now_in_name();
  std::string folder = stem;
  for (unsigned int number = 1; !fs::create_directory(folder); ++number)
    folder = std::string(stem).append("-").append(four_digits(number));
  return folder;
}

// Other files and folders are not touched.
void Diagnosis_Folder::remove_oldest() const {
  std::vector<fs::path> folders;
  for (const fs::directory_entry &entry : fs::directory_iterator(path_))
    if (entry.is_directory() && !time_in(entry.path()).empty() &&
        fs::exists(entry.path() / "failure.txt"))
      folders.push_back(entry.path());
  if (folders.size() <= limit_) return;
  std::sort(folders.begin(), folders.end(), [](const fs::path &one, const fs::path &other) {
    return time_in(one) < time_in(other);
  });
  folders.resize(folders.size() - limit_);
  for (const fs::path &folder : folders) {
    std::error_code ignored;
    for (const char *const file :
         {"messages.txt", "graph.dot", "queues.txt", "caps.txt", "plugins.txt", "failure.txt"})
      fs::remove(folder / file, ignored);
    fs::remove(folder, ignored);
  }
}

}  // namespace kel::tavren::programs
