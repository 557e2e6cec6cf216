# Precompiles the headers of other projects, to speed up the builds. Included by the project() call.
cmake_language(DEFER CALL target_precompile_headers tavren_capture PRIVATE
  <algorithm> <map> <memory> <sstream> <stdexcept> <string> <utility> <vector>
  <boost/filesystem/path.hpp> <boost/format.hpp> <boost/scope_exit.hpp>
  <boost/smart_ptr/intrusive_ptr.hpp>
  <gst/app/gstappsink.h> <gst/gst.h> <gst/pbutils/pbutils.h>)
