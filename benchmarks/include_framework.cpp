// The twin of include_library.cpp: what the library's header needs of others, and nothing of it.
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
