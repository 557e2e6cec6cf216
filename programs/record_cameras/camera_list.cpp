#include "camera_list.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <glib.h>
#include <tavren/handles/emancipator.h>

#include "recorder/recorder_arguments.h"

namespace kel::tavren::programs {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;
using Error = std::unique_ptr<GError, decltype(&g_error_free)>;
using Key_File = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;
using Texts = std::unique_ptr<gchar *, decltype(&g_strfreev)>;

constexpr const char *defaults_group = "defaults";
constexpr double always = 1e9;  // s

std::runtime_error group_error(const std::string &group, const std::string &text) {
  return std::runtime_error('[' + group + "]: " + text);
}

std::string read_text(const std::string &file) {
  gchar *contents = nullptr;
  GError *error = nullptr;
  const bool read = g_file_get_contents(file.c_str(), &contents, nullptr, &error) != FALSE;
  const Text owned_contents(contents);
  const Error owned_error(error, g_error_free);
  if (!read) throw std::runtime_error(error->message);
  return contents;
}

// GKeyFile merges groups of the same name, so one of two cameras would be ignored.
void check_groups(const std::string &text) {
  std::set<std::string> groups;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t end = line.find(']');
    if (line.rfind('[', 0) != 0 || end == std::string::npos) continue;
    const std::string group = line.substr(1, end - 1);
    if (!groups.insert(group).second) throw group_error(group, "there are two groups of this name");
  }
}

Key_File parse(const std::string &text) {
  Key_File file(g_key_file_new(), g_key_file_unref);
  GError *error = nullptr;
  if (g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, &error))
    return file;
  const Error owned(error, g_error_free);
  throw std::runtime_error(error->message);
}

// Values are taken literally, as on a command line, without GKeyFile's escape sequences.
void read_settings(GKeyFile *file, const std::string &group, Camera_Settings &settings) {
  const Texts keys(g_key_file_get_keys(file, group.c_str(), nullptr, nullptr), g_strfreev);
  for (gchar **key = keys.get(); key != nullptr && *key != nullptr; ++key) {
    const Text value(g_key_file_get_value(file, group.c_str(), *key, nullptr));
    settings[*key] = g_strchomp(value.get());
  }
}

bool as_boolean(const std::string &key, const std::string &value) {
  if (value != "true" && value != "false")
    throw std::invalid_argument(key + " must be true or false");
  return value == "true";
}

// Converts the settings to the arguments of a command line.
std::vector<std::string> as_arguments(const Camera_Settings &settings,
                                      const std::vector<GOptionEntry> &entries) {
  std::vector<std::string> arguments = {"camera"};
  for (const auto &[key, value] : settings) {
    const auto entry =
        std::find_if(entries.begin(), entries.end(), [name = key](const GOptionEntry &candidate) {
          return candidate.long_name == name;
        });
    if (entry == entries.end()) throw std::invalid_argument("unknown key \"" + key + '"');
    if (entry->arg != G_OPTION_ARG_NONE)
      arguments.push_back(std::string("--").append(key).append("=").append(value));
    else if (as_boolean(key, value))
      arguments.push_back("--" + key);
  }
  return arguments;
}

void parse_arguments(const std::vector<std::string> &arguments, std::vector<GOptionEntry> entries) {
  entries.push_back({nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr});
  const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
      g_option_context_new(nullptr), g_option_context_free);
  g_option_context_add_main_entries(context.get(), entries.data(), nullptr);
  Texts texts(g_new0(gchar *, arguments.size() + 1), g_strfreev);
  for (std::size_t i = 0; i < arguments.size(); ++i)
    texts.get()[i] = g_strdup(arguments[i].c_str());
  gchar **remaining = texts.release();
  GError *error = nullptr;
  const bool parsed = g_option_context_parse_strv(context.get(), &remaining, &error) != FALSE;
  texts.reset(remaining);
  const Error owned(error, g_error_free);
  if (!parsed) throw std::invalid_argument(error->message);
}

Recorder_Options parse_settings(const std::string &name, const Camera_Settings &settings) {
  if (settings.count("uri") == 0) throw std::invalid_argument("uri is missing");
  Camera_Arguments camera;
  Recorder_Arguments recorder(name + ".mkv", 0, always);
  std::vector<GOptionEntry> entries = camera.entries();
  const std::vector<GOptionEntry> others = recorder.entries();
  entries.insert(entries.end(), others.begin(), others.end());
  parse_arguments(as_arguments(settings, entries), entries);
  Recorder_Options options = recorder.options();
  options.name = name;
  options.camera = camera.options();
  return options;
}

// Replaces options in a message with keys, which have no leading hyphens.
std::string without_hyphens(std::string text) {
  for (std::size_t at = text.find(" --"); at != std::string::npos; at = text.find(" --"))
    text.erase(at + 1, 2);
  return text.rfind("--", 0) == 0 ? text.substr(2) : text;
}

Listed_Camera make_camera(const std::string &name, const Camera_Settings &settings) {
  try {
    Listed_Camera camera;
    camera.settings = settings;
    camera.options = parse_settings(name, settings);
    camera.output = std::filesystem::weakly_canonical(
                        std::filesystem::absolute(camera.options.recording.output))
                        .string();
    return camera;
  } catch (const std::invalid_argument &error) {
    throw group_error(name, without_hyphens(error.what()));
  } catch (const std::exception &error) {
    throw group_error(name, error.what());
  }
}

}  // namespace

Camera_List read_cameras(const std::string &file) {
  const std::string text = read_text(file);
  check_groups(text);
  const Key_File key_file = parse(text);
  Camera_Settings defaults;
  read_settings(key_file.get(), defaults_group, defaults);
  Camera_List cameras;
  std::map<std::string, std::string> outputs;  // names of cameras by their output
  const Texts groups(g_key_file_get_groups(key_file.get(), nullptr), g_strfreev);
  for (gchar **group = groups.get(); *group != nullptr; ++group) {
    if (std::string(*group) == defaults_group) continue;
    Camera_Settings settings = defaults;
    read_settings(key_file.get(), *group, settings);
    const Listed_Camera camera = make_camera(*group, settings);
    if (const auto [other, is_new] = outputs.emplace(camera.output, *group); !is_new)
      throw group_error(*group, "writes the same file as [" + other->second +
                                    "]: " + camera.options.recording.output);
    cameras.emplace(*group, camera);
  }
  if (cameras.empty()) throw std::runtime_error("there is no camera in the file");
  return cameras;
}

}  // namespace kel::tavren::programs
