// Includes the library's header. measure_costs measures the time to compile this file.
#include <tavren/capture/media_helper.h>
