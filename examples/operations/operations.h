// Not installed: the examples of the reference, one for each group of operations.

#ifndef EXAMPLES_OPERATIONS_OPERATIONS_H
#define EXAMPLES_OPERATIONS_OPERATIONS_H

#include <gst/gst.h>

// Each example receives a new, empty pipeline.

// elements.cpp
void construction(GstElement *pipeline);
void control(GstElement *pipeline);
void argument_checks(GstElement *pipeline);
void peers_and_ancestry(GstElement *pipeline);
void element_types(GstElement *pipeline);
void bin_search(GstElement *pipeline);

// pads.cpp
void pads_and_links(GstElement *pipeline);
void tee_branches(GstElement *pipeline);
void multiqueue_pads(GstElement *pipeline);

// media.cpp
void media_types(GstElement *pipeline);
void element_selection(GstElement *pipeline);
void proxy_selection(GstElement *pipeline);
void media_discovery(GstElement *pipeline);
void caps_readers(GstElement *pipeline);

// texts.cpp
void errors(GstElement *pipeline);
void handles(GstElement *pipeline);
void keyed_lookup(GstElement *pipeline);
void enumeration_names(GstElement *pipeline);
void time_and_segment_text(GstElement *pipeline);
void queue_report(GstElement *pipeline);

#endif
