#include "misbehaviour.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <stdexcept>

#include <glib.h>

namespace kel::tavren::programs {

namespace {

constexpr double longest = 24.0 * 3600;  // s

struct Word {
  const char *name;
  Misbehaviour::Kind kind;
  bool has_duration;
};

constexpr Word words[] = {
    {"pause", Misbehaviour::Kind::pause, true},
    {"drop", Misbehaviour::Kind::drop, true},
    {"stop-video", Misbehaviour::Kind::stop_video, false},
    {"stop-audio", Misbehaviour::Kind::stop_audio, false},
    {"silent", Misbehaviour::Kind::silent, false},
    {"close", Misbehaviour::Kind::close, false},
    {"gone", Misbehaviour::Kind::gone, true},
};

// Parses a number of seconds with a decimal point, in every locale.
std::optional<double> parse_seconds(const std::string &text) {
  if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos)
    return std::nullopt;
  char *end = nullptr;
  const double seconds = g_ascii_strtod(text.c_str(), &end);
  if (*end != '\0' || seconds > longest) return std::nullopt;
  return seconds;
}

// NAME@START or NAME:DURATION@START
std::optional<Misbehaviour> parse(const std::string &text) {
  const std::size_t at = text.find('@');
  if (at == std::string::npos) return std::nullopt;
  const std::string what = text.substr(0, at);
  const std::size_t colon = what.find(':');
  const auto *const word =
      std::find_if(std::begin(words), std::end(words), [&](const Word &candidate) {
        return what.substr(0, colon) == candidate.name &&
               candidate.has_duration == (colon != std::string::npos);
      });
  if (word == std::end(words)) return std::nullopt;
  const auto start = parse_seconds(text.substr(at + 1));
  const auto duration =
      word->has_duration ? parse_seconds(what.substr(colon + 1)) : std::optional<double>(0);
  if (!start || !duration) return std::nullopt;
  return Misbehaviour{word->kind, *duration, *start};
}

}  // namespace

std::vector<Misbehaviour> parse_misbehaviour(const std::string &list) {
  std::vector<Misbehaviour> misbehaviour;
  std::istringstream items(list);
  for (std::string item; std::getline(items, item, ',');) {
    const auto parsed = parse(item);
    if (!parsed)
      throw std::invalid_argument("--misbehave takes pause:S@T, drop:S@T, stop-video@T, "
                                  "stop-audio@T, silent@T, close@T and gone:S@T, not \"" +
                                  item + '"');
    misbehaviour.push_back(*parsed);
  }
  return misbehaviour;
}

}  // namespace kel::tavren::programs
