// The element krodemosaic.
#pragma once

#include <gst/gst.h>

G_BEGIN_DECLS
GST_ELEMENT_REGISTER_DECLARE(krodemosaic);
G_END_DECLS
