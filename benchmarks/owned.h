// Owning handles for the objects of the trials.

#ifndef TAVREN_BENCHMARKS_OWNED_H
#define TAVREN_BENCHMARKS_OWNED_H

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::benchmarks {

using Owned_Element = boost::intrusive_ptr<GstElement>;
using Owned_Pad = boost::intrusive_ptr<GstPad>;
using Owned_Caps = boost::intrusive_ptr<GstCaps>;

// Takes ownership of a new element.
inline Owned_Element owned(GstElement *element) {
  return Owned_Element(GST_ELEMENT_CAST(gst_object_ref_sink(element)), false);
}
inline Owned_Caps owned(GstCaps *caps) {
  return Owned_Caps(caps, false);
}

}  // namespace kel::tavren::benchmarks

#endif
