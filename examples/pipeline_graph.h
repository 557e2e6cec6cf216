// Pictures of running pipelines.

#ifndef TAVREN_EXAMPLES_PIPELINE_GRAPH_H
#define TAVREN_EXAMPLES_PIPELINE_GRAPH_H

#include <string>

#include <gst/gst.h>

namespace kel::tavren::examples {

// Draws a bin with its elements, links and caps as an SVG file, through Graphviz' dot. Throws
// std::runtime_error when dot is missing or fails.
void draw_graph(GstBin *bin, const std::string &file);

}  // namespace kel::tavren::examples

#endif
