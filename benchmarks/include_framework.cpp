// The counterpart of include_library.cpp: includes only the dependencies of the library's header.
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/scope_exit.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>
