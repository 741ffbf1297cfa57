// krodemosaic in a harness: caps, buffers with rows at any place, pictures beside the reference's.
#pragma once

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <memory>
#include <string>
#include <vector>

#include "view_reference.hpp"

namespace gsttest {

// ---- formats, as written in caps and as the reference knows them ----
struct Input {
    std::string media, name;
    reference::InputFormat format;
    bool bigEndian;

    std::string caps(int height, int width) const;
    size_t rowBytes(int width) const { return reference::inputBytes(format, static_cast<size_t>(width)); }
};
const std::vector<Input>& inputs();
const Input& input(const std::string& name);

struct Output {
    std::string name;
    std::vector<std::string> planes;  // letters of the reference, in the order of the planes
    int depth;

    std::string caps(int height, int width) const;
    size_t rowBytes(size_t plane, int width) const {
        return reference::bytesOf(planes[plane], depth) * static_cast<size_t>(width);
    }
};
const std::vector<Output>& outputs();
const Output& output(const std::string& name);

// ---- memory ----
// Where rows lie: bytes in front, then rows so far apart; downwards: row 0 is the last.
struct Place {
    size_t front = 0, stride = 0;
    bool upwards = false;
};
using Bytes = std::vector<uint8_t>;
Bytes noise(size_t count, uint32_t seed);

struct Unref {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstEvent* event) const { gst_event_unref(event); }
};
using BufferPointer = std::unique_ptr<GstBuffer, Unref>;
using CapsPointer = std::unique_ptr<GstCaps, Unref>;

GstBuffer* bufferOf(const Bytes& bytes);
CapsPointer capsOf(const std::string& text);

// A frame of noise in a buffer, and what its rows hold.
struct TestFrame {
    const Input* input;
    int height, width;
    Place place;
    Bytes bytes;

    TestFrame(const Input& format, int h, int w, Place rows = {});
    GstBuffer* buffer(bool withMeta) const;
    reference::Scene scene() const;

private:
    size_t rowZero() const;
};

// Pictures that the receiver provides the memory for: each plane's rows at such a place, in one memory or one a
// plane.
struct Receiver {
    std::vector<Place> planes;
    bool apart = false;
    bool tooSmall = false;
    bool otherMeta = false;
    bool refuses = false;
};

// ---- the element ----
class Element {
public:
    explicit Element(const char* launch = "krodemosaic");
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    GstHarness* harness() const { return harness_; }
    GstElement* element() const { return element_; }
    void setCaps(const std::string& in, const std::string& out);
    // Pictures go into the receiver's memory from the next caps on.
    void receiveIn(const Receiver& receiver, const Output& output, int height, int width);
    GstFlowReturn push(GstBuffer* buffer) { return gst_harness_push(harness_, buffer); }
    BufferPointer pull() { return BufferPointer(gst_harness_try_pull(harness_)); }
    // The error that was posted, both texts; empty where there is none.
    std::string postedError();
    std::string outputFormat();

private:
    static GstPadProbeReturn answer(GstPad* pad, GstPadProbeInfo* info, gpointer self);

    GstHarness* harness_;
    GstElement* element_;
    GstBus* bus_;
    GstBufferPool* pool_ = nullptr;
};

// Where the picture in the buffer is not the reference's, and which bytes between its rows were written; empty where
// all is right.
std::string differenceOf(GstBuffer* buffer, const Output& output, int height, int width, reference::Scene& scene,
                         reference::Method method);
std::string writtenGapsOf(GstBuffer* buffer, const Output& output, int height, int width);

}  // namespace gsttest
