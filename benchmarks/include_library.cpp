// Includes the library's header. measure-costs measures the time to compile this file.
#include <tavren/capture/media_helper.h>
