// Prints the progress of a recorder.

#ifndef TAVREN_PROGRAMS_PROGRESS_DISPLAY_H
#define TAVREN_PROGRAMS_PROGRESS_DISPLAY_H

#include <string>

#include <glib.h>

#include "recorder/recorder_log.h"

namespace kel::tavren::programs {

// Writes lines to stdout. On a terminal, the progress is one line that is rewritten. Otherwise, it
// is a new line every ten seconds.
class Progress_Display : public Recorder_Log {
public:
  explicit Progress_Display(bool quiet);

  using Recorder_Log::line;
  void line(const std::string &text, const std::exception_ptr &cause) override;
  void progress(const std::string &text) override;

private:
  bool quiet_;
  bool is_terminal_;
  bool line_is_open_ = false;
  gint64 last_progress_ = 0;
};

}  // namespace kel::tavren::programs

#endif
