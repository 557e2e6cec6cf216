// A payloader for the metadata streams of ONVIF cameras, which the framework does not provide.

#ifndef TAVREN_PROGRAMS_ONVIF_METADATA_PAYLOADER_H
#define TAVREN_PROGRAMS_ONVIF_METADATA_PAYLOADER_H

namespace kel::tavren::programs {

// Registers the element factory "onvifmetadatapay" for this process. The element accepts XML
// documents and sends each one as RTP with the encoding name VND.ONVIF.METADATA.
void register_onvif_metadata_payloader();

}  // namespace kel::tavren::programs

#endif
