#include "misbehaving_server.h"

#include <utility>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

void guard_payloader(Stream_Gate &gate, const Camera_Elements &elements, const std::string &name) {
  if (name.empty()) return;
  const boost::intrusive_ptr<GstElement> payloader(
      Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(elements.bin.get()), name), false);
  gate.guard(payloader.get());
}

}  // namespace

void Misbehaving_Server::guard(const Camera_Elements &elements) {
  guard_payloader(video_, elements, elements.video);
  guard_payloader(audio_, elements, elements.audio);
  guard_payloader(metadata_, elements, elements.metadata);
}

void Misbehaving_Server::start() {
  if (std::exchange(started_, true)) return;
  for (const Misbehaviour &misbehaviour : misbehaviour_)
    schedule(misbehaviour.start, [this, &misbehaviour] { begin(misbehaviour); });
}

void Misbehaving_Server::stop() noexcept {
  for (Stream_Gate *const gate : {&video_, &audio_, &metadata_})
    gate->open();
}

void Misbehaving_Server::schedule(double seconds, std::function<void()> action) {
  timers_.emplace_back(context_, static_cast<guint>(seconds * 1000), Timer::Kind::once,
                       std::move(action));
}

void Misbehaving_Server::begin(const Misbehaviour &misbehaviour) {
  const auto duration = static_cast<gint64>(misbehaviour.duration * G_TIME_SPAN_SECOND);
  switch (misbehaviour.kind) {
  case Misbehaviour::Kind::pause:
    for (Stream_Gate *const gate : {&video_, &audio_, &metadata_})
      gate->hold(duration);
    break;
  case Misbehaviour::Kind::drop:
    for (Stream_Gate *const gate : {&video_, &audio_, &metadata_})
      gate->drop(duration);
    break;
  case Misbehaviour::Kind::stop_video:
    video_.drop(Stream_Gate::for_ever);
    break;
  case Misbehaviour::Kind::stop_audio:
    audio_.drop(Stream_Gate::for_ever);
    break;
  case Misbehaviour::Kind::silent:
    for (Stream_Gate *const gate : {&video_, &audio_, &metadata_})
      gate->drop(Stream_Gate::for_ever);
    break;
  case Misbehaviour::Kind::close:
    server_.disconnect_clients();
    break;
  case Misbehaviour::Kind::gone:
    server_.stop_listening();
    server_.disconnect_clients();
    schedule(misbehaviour.duration, [this] { listen_again(); });
    break;
  }
}

// Another process may have taken the port in the meantime. The camera then remains unavailable.
void Misbehaving_Server::listen_again() noexcept {
  try {
    server_.listen();
  } catch (const std::exception &error) {
    print_failure("simulated_camera", error);
  }
}

}  // namespace kel::tavren::programs
