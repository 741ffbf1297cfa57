#include "krodemosaic.hpp"

static gboolean registerElements(GstPlugin* plugin) { return GST_ELEMENT_REGISTER(krodemosaic, plugin); }

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kro, "Raw camera frames to pictures", registerElements,
                  KRO_VERSION, "MIT/X11", PACKAGE, "Unknown package origin")
