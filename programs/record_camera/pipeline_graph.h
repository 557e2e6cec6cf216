// Pictures of running pipelines.

#ifndef TAVREN_PROGRAMS_PIPELINE_GRAPH_H
#define TAVREN_PROGRAMS_PIPELINE_GRAPH_H

#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Describes a bin as it is now, with its elements, links and caps, in Graphviz' language.
std::string describe_graph(GstBin *bin);

// Draws a description as an SVG file through Graphviz' dot. Throws std::runtime_error, which tells
// the domain and number of the cause, when dot is missing or fails or the file cannot be written.
void draw_graph(const std::string &description, const std::string &file);

}  // namespace kel::tavren::programs

#endif
