// What a simulated camera does wrong.

#ifndef TAVREN_PROGRAMS_MISBEHAVIOUR_H
#define TAVREN_PROGRAMS_MISBEHAVIOUR_H

#include <string>
#include <vector>

namespace kel::tavren::programs {

struct Misbehaviour {
  enum class Kind {
    pause,       // holds everything back, then sends it in a burst
    drop,        // loses everything
    stop_video,  // sends no more video
    stop_audio,  // sends no more audio
    silent,      // sends nothing more, but keeps the connections open
    close,       // closes all connections
    gone         // closes all connections and refuses new ones
  };
  Kind kind = Kind::silent;
  double duration = 0;  // s, for pause, drop and gone
  double start = 0;     // s after the first viewer began to play
};

// Parses a list such as "pause:1@3,stop-audio@5". Throws std::invalid_argument for a word that it
// does not know.
std::vector<Misbehaviour> parse_misbehaviour(const std::string &list);

}  // namespace kel::tavren::programs

#endif
