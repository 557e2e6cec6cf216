// What a file pays that includes the library's header: compiled by measure_costs.
#include <tavren/capture/media_helper.h>
