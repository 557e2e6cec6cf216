// The framework has no payloader for the metadata streams of ONVIF cameras; the simulated camera
// brings its own.

#ifndef TAVREN_PROGRAMS_ONVIF_METADATA_PAYLOADER_H
#define TAVREN_PROGRAMS_ONVIF_METADATA_PAYLOADER_H

namespace kel::tavren::programs {

// Makes the element factory "onvifmetadatapay" known to this process: it takes XML documents and
// sends each as RTP of encoding name VND.ONVIF.METADATA.
void register_onvif_metadata_payloader();

}  // namespace kel::tavren::programs

#endif
