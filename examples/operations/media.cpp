// Media: types, the elements for them, discovery, caps.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "operations.h"

using kel::tavren::capture::Media_Helper;

void media_types(GstElement *) {
  //! [media_types]
  const boost::intrusive_ptr<GstCaps> caps(gst_caps_from_string("video/x-h264, width=640"), false);
  const auto type = Media_Helper::get_media_type(caps.get());
  std::cout << Media_Helper::get_media_type_string(type) << '\n';
  // prints: H264
  if (Media_Helper::is_video(type, false)) std::cout << "compressed video\n";
  // prints: compressed video
  //! [media_types]
}

void element_selection(GstElement *pipeline) {
  //! [element_selection]
  const std::string muxer = Media_Helper::select_muxer("recordings/gate.mkv");
  Media_Helper::create_and_add_element_to_pipeline(muxer, pipeline, "muxer");
  std::cout << muxer << '\n';
  // prints: matroskamux
  std::cout << Media_Helper::select_parser(kel::tavren::capture::H264) << '\n';
  // prints: h264parse
  try {
    Media_Helper::select_muxer("recordings/gate.MKV");
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: Unknown file extension : could not create muxer
  }
  //! [element_selection]
}

void proxy_selection(GstElement *) {
  //! [proxy_selection]
  const boost::intrusive_ptr<GstCaps> caps(
      gst_caps_from_string("application/x-rtp, media=video, clock-rate=90000, encoding-name=H264"),
      false);
  const auto [depayloader, payloader] = Media_Helper::select_proxy_elements(caps.get());
  std::cout << depayloader << ", " << payloader << '\n';
  // prints: rtph264depay, rtph264pay
  //! [proxy_selection]
}

void media_discovery(GstElement *) {
  //! [media_discovery]
  try {
    const auto info = Media_Helper::get_media_info("file:///nonexistent/gate.mkv", 5 * GST_SECOND);
    std::cout << info->video_caps.size() << " video streams, "
              << Media_Helper::gst_time_to_string(info->duration) << '\n';
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: Discoverer returned error: GST_DISCOVERER_ERROR
  }
  //! [media_discovery]
}

void caps_readers(GstElement *) {
  //! [caps_readers]
  const boost::intrusive_ptr<GstCaps> caps(
      gst_caps_from_string("video/x-raw, width=1920, height=1080, framerate=25/1"), false);
  const auto resolution = Media_Helper::get_resolution_from_caps(caps.get());
  const auto [frames, seconds] = Media_Helper::get_framerate_from_caps(caps.get());
  std::cout << resolution.first << 'x' << resolution.second << ", " << frames << '/' << seconds
            << '\n';
  // prints: 1920x1080, 25/1
  const auto [width, height] = Media_Helper::calculate_resolution({640, 640}, resolution);
  std::cout << width << 'x' << height << '\n';
  // prints: 640x360
  //! [caps_readers]
}
