// Draws running pipelines.

#ifndef TAVREN_PROGRAMS_PIPELINE_GRAPH_H
#define TAVREN_PROGRAMS_PIPELINE_GRAPH_H

#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Describes the current elements, links and caps of a bin in Graphviz' DOT language.
std::string describe_graph(GstBin *bin);

// Draws a description as an SVG file with Graphviz' dot. Throws std::runtime_error, whose text
// contains the domain and code of the cause, if dot is missing or fails, or the file cannot be
// written.
void draw_graph(const std::string &description, const std::string &file);

}  // namespace kel::tavren::programs

#endif
