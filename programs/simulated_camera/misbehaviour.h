// The misbehaviour of a simulated camera.

#ifndef TAVREN_PROGRAMS_MISBEHAVIOUR_H
#define TAVREN_PROGRAMS_MISBEHAVIOUR_H

#include <string>
#include <vector>

namespace kel::tavren::programs {

struct Misbehaviour {
  enum class Kind {
    pause,       // holds all data back, then sends it in a burst
    drop,        // drops all data
    stop_video,  // sends no more video
    stop_audio,  // sends no more audio
    silent,      // sends nothing more, but keeps the connections open
    close,       // closes all connections
    gone         // closes all connections and refuses new ones
  };
  Kind kind = Kind::silent;
  double duration = 0;  // s, of pause, drop and gone
  double start = 0;     // s after the first viewer started to play
};

// Parses a list such as "pause:1@3,stop-audio@5". Throws std::invalid_argument for an unknown
// entry.
std::vector<Misbehaviour> parse_misbehaviour(const std::string &list);

}  // namespace kel::tavren::programs

#endif
