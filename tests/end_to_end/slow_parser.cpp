// Makes a program take long to create the parser of the audio, as a slow machine does.

#include "replaced_function.h"

extern "C" GstElement *gst_element_factory_make(const gchar *factory, const gchar *name) {
  if (g_strcmp0(factory, "aacparse") == 0) g_usleep(3 * G_USEC_PER_SEC / 2);
  const auto make = kel::tavren::tests::replaced_function(gst_element_factory_make, __func__);
  return make(factory, name);
}
