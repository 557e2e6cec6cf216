// A running time shared by several pipelines.

#ifndef TAVREN_PROGRAMS_RUNNING_TIME_H
#define TAVREN_PROGRAMS_RUNNING_TIME_H

#include <memory>

#include <gst/gst.h>

namespace kel::tavren::programs {

// A clock and a base time. Buffers keep their running time when they move to another pipeline, or
// when a pipeline is replaced.
class Running_Time {
public:
  // Starts now.
  Running_Time()
      : clock_(gst_system_clock_obtain(), gst_object_unref),
        base_time_(gst_clock_get_time(clock_.get())) {}

  // Makes the pipeline keep this running time through all state changes.
  void set_for(GstPipeline *pipeline) const noexcept {
    gst_pipeline_use_clock(pipeline, clock_.get());
    gst_element_set_start_time(GST_ELEMENT_CAST(pipeline), GST_CLOCK_TIME_NONE);
    gst_element_set_base_time(GST_ELEMENT_CAST(pipeline), base_time_);
  }

private:
  const std::unique_ptr<GstClock, decltype(&gst_object_unref)> clock_;
  const GstClockTime base_time_;
};

}  // namespace kel::tavren::programs

#endif
