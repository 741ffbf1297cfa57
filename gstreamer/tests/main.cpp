#include <gst/gst.h>
#include <gtest/gtest.h>

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    gst_init(&count, &arguments);
    // A warning of GLib's or GStreamer's is a failure.
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
    return RUN_ALL_TESTS();
}
