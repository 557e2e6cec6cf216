// Prints the progress of a recorder.

#ifndef TAVREN_PROGRAMS_PROGRESS_DISPLAY_H
#define TAVREN_PROGRAMS_PROGRESS_DISPLAY_H

#include <string>

#include <glib.h>

namespace kel::tavren::programs {

// Writes lines to stdout. On a terminal, the progress is one line that is rewritten. Otherwise, it
// is a new line every ten seconds.
class Progress_Display {
public:
  explicit Progress_Display(bool quiet);

  // Prints a permanent line.
  void line(const std::string &text);
  // Prints the progress. Call this for every update.
  void progress(const std::string &text);

private:
  bool quiet_;
  bool is_terminal_;
  bool line_is_open_ = false;
  gint64 last_progress_ = 0;
};

}  // namespace kel::tavren::programs

#endif
