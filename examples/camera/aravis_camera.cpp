#include "aravis_camera.hpp"

#include <arv.h>

#include <algorithm>
#include <atomic>

#include "simulated_scene.hpp"

namespace kro_camera {

namespace {

// While one is shown and one is filled, the others outlast a picture that takes longer for once.
constexpr int bufferCount = 8;

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class Object>
using Held = std::unique_ptr<Object, Unref>;

// Calls a function of Aravis with a place for its error, which becomes a Failure.
template <class Function>
auto checked(const std::string& what, Function&& function) {
    struct Place {
        GError* error = nullptr;
        ~Place() { g_clear_error(&error); }
    } place;
    const auto throwIf = [&] {
        if (place.error != nullptr) {
            throw Failure(what + ": " + place.error->message);
        }
    };
    if constexpr (std::is_void_v<decltype(function(&place.error))>) {
        function(&place.error);
        throwIf();
    } else {
        auto result = function(&place.error);
        throwIf();
        return result;
    }
}

class AravisCamera : public Camera {
public:
    AravisCamera(const std::string& id, double rate);
    ~AravisCamera() override;
    std::string name() const override { return name_; }
    std::vector<kro::PixelFormat> formats() override;
    std::vector<Size> sizes(kro::PixelFormat) override { return usualSizes(bounds()); }
    Mode start(const Mode& wanted) override;
    Arrival next(std::chrono::milliseconds timeout) override;
    void stop() override;

protected:
    ArvDevice* device() const { return arv_camera_get_device(camera_.get()); }
    virtual void setFormat(kro::PixelFormat format);
    virtual SizeBounds bounds();
    // Bytes of a buffer that hold a frame.
    virtual std::size_t filled(ArvBuffer* buffer) const;
    std::size_t payload() const { return payload_; }
    void setName(const std::string& name) { name_ = name; }

private:
    static void noteLoss(ArvDevice*, void* camera) { static_cast<AravisCamera*>(camera)->gone_ = true; }
    void prepareStream();
    void endStream();
    void giveBack();
    std::uint64_t newlyLost();
    kro::Frame frameIn(ArvBuffer* buffer) const;

    std::string name_;
    Held<ArvCamera> camera_;
    Held<ArvStream> stream_;
    double rate_;
    std::size_t payload_ = 0;
    ArvBuffer* shown_ = nullptr;  // to be given back
    std::uint64_t damaged_ = 0;
    std::uint64_t missing_ = 0;  // by the gaps in their numbers
    std::uint64_t lastId_ = 0;
    std::uint64_t told_ = 0;
    std::atomic<bool> gone_{false};
};

AravisCamera::AravisCamera(const std::string& id, double rate) : name_(id.empty() ? "of Aravis" : id), rate_(rate) {
    const std::string notFound = "camera " + name_ + ": not found (--list shows those that are there, --aravis " +
                                 simulatedId + " needs none)";
    camera_.reset(
        checked(notFound, [&](GError** error) { return arv_camera_new(id.empty() ? nullptr : id.c_str(), error); }));
    if (!camera_) {
        throw Failure(notFound);
    }
    const auto part = [&](auto function) {
        const char* const text = function(camera_.get(), nullptr);
        return std::string(text == nullptr ? "?" : text);
    };
    name_ = part(arv_camera_get_vendor_name) + " " + part(arv_camera_get_model_name) + " " +
            part(arv_camera_get_device_serial_number);
    // A signal's handler has the type that its signal says, whatever the parameter's type is.
    g_signal_connect(device(), "control-lost", reinterpret_cast<GCallback>(&AravisCamera::noteLoss), this);
}

AravisCamera::~AravisCamera() {
    g_signal_handlers_disconnect_by_data(device(), this);
    endStream();
    if (shown_ != nullptr) {
        g_object_unref(shown_);
    }
}

std::vector<kro::PixelFormat> AravisCamera::formats() {
    guint count = 0;
    const std::unique_ptr<gint64, decltype(&g_free)> codes(
        checked(name_ + ": its formats cannot be read",
                [&](GError** error) { return arv_camera_dup_available_pixel_formats(camera_.get(), &count, error); }),
        g_free);
    std::vector<kro::PixelFormat> found;
    std::for_each(codes.get(), codes.get() + count, [&](gint64 code) {
        const auto format = static_cast<kro::PixelFormat>(code);
        if (isFrameFormat(format)) {
            found.push_back(format);
        }
    });
    return found;
}

SizeBounds AravisCamera::bounds() {
    ArvCamera* const camera = camera_.get();
    SizeBounds bounds;
    checked(name_ + ": its sizes cannot be read", [&](GError** error) {
        arv_camera_get_width_bounds(camera, &bounds.least.width, &bounds.most.width, error);
    });
    checked(name_ + ": its sizes cannot be read", [&](GError** error) {
        arv_camera_get_height_bounds(camera, &bounds.least.height, &bounds.most.height, error);
    });
    bounds.step = {arv_camera_get_width_increment(camera, nullptr), arv_camera_get_height_increment(camera, nullptr)};
    bounds.least = {std::max(bounds.least.width, 4), std::max(bounds.least.height, 4)};
    return bounds;
}

void AravisCamera::setFormat(kro::PixelFormat format) {
    checked(name_ + ": " + std::string(kro::nameOf(format)) + " is refused", [&](GError** error) {
        arv_camera_set_pixel_format(camera_.get(), static_cast<ArvPixelFormat>(format), error);
    });
}

void AravisCamera::prepareStream() {
    ArvCamera* const camera = camera_.get();
    payload_ = checked(name_ + ": the size of its frames cannot be read",
                       [&](GError** error) { return arv_camera_get_payload(camera, error); });
    stream_.reset(checked(name_ + ": no stream",
                          [&](GError** error) { return arv_camera_create_stream(camera, nullptr, nullptr, error); }));
    if (!stream_) {
        throw Failure(name_ + ": no stream");
    }
    for (int i = 0; i < bufferCount; ++i) {
        arv_stream_push_buffer(stream_.get(), arv_buffer_new_allocate(payload_));
    }
}

Mode AravisCamera::start(const Mode& wanted) {
    stop();
    ArvCamera* const camera = camera_.get();
    setFormat(wanted.format);
    const SizeBounds limits = bounds();
    const Size size = within(limits, wanted.size.width > 0 ? wanted.size : limits.most);
    checked(name_ + ": " + textOf(size) + " is refused",
            [&](GError** error) { arv_camera_set_region(camera, 0, 0, size.width, size.height, error); });
    if (rate_ > 0) {
        checked(name_ + ": that frame rate is refused",
                [&](GError** error) { arv_camera_set_frame_rate(camera, rate_, error); });
    }
    checked(name_ + ": does not send continuously",
            [&](GError** error) { arv_camera_set_acquisition_mode(camera, ARV_ACQUISITION_MODE_CONTINUOUS, error); });
    prepareStream();
    checked(name_ + ": does not start", [&](GError** error) { arv_camera_start_acquisition(camera, error); });
    return {wanted.format, size};
}

void AravisCamera::stop() {
    giveBack();
    endStream();
    damaged_ = missing_ = lastId_ = told_ = 0;
}

// Of one that is gone nobody would hear it, and Aravis would ask many times.
void AravisCamera::endStream() {
    if (stream_ && !gone_) {
        arv_camera_stop_acquisition(camera_.get(), nullptr);
    }
    stream_.reset();
}

void AravisCamera::giveBack() {
    if (shown_ != nullptr) {
        arv_stream_push_buffer(stream_.get(), shown_);
        shown_ = nullptr;
    }
}

// Frames that found no buffer are in Aravis' own count, those that never came in the numbers of the others: depending
// on the camera a loss is seen by one of them or by both.
std::uint64_t AravisCamera::newlyLost() {
    guint64 whole = 0;
    guint64 failed = 0;
    guint64 withoutBuffer = 0;
    arv_stream_get_statistics(stream_.get(), &whole, &failed, &withoutBuffer);
    const std::uint64_t total = std::max<std::uint64_t>(failed + withoutBuffer, damaged_ + missing_);
    const std::uint64_t since = total - std::min(told_, total);
    told_ += since;
    return since;
}

std::size_t AravisCamera::filled(ArvBuffer* buffer) const {
    std::size_t size = 0;
    arv_buffer_get_image_data(buffer, &size);
    return size;
}

kro::Frame AravisCamera::frameIn(ArvBuffer* buffer) const {
    kro::Frame frame{arv_buffer_get_image_data(buffer, nullptr), arv_buffer_get_image_height(buffer),
                     arv_buffer_get_image_width(buffer),
                     static_cast<kro::PixelFormat>(arv_buffer_get_image_pixel_format(buffer))};
    gint gap = 0;
    gint below = 0;
    arv_buffer_get_image_padding(buffer, &gap, &below);
    if (gap > 0) {
        frame.stride = kro::rowBytes(frame.format, frame.width) + gap;
    }
    if (filled(buffer) < sampleBytes(frame)) {
        throw Failure(name_ + ": a frame of " + std::to_string(filled(buffer)) + " bytes, expected " +
                      std::to_string(sampleBytes(frame)) + " for " +
                      textOf(Mode{frame.format, {frame.width, frame.height}}));
    }
    return frame;
}

Arrival AravisCamera::next(std::chrono::milliseconds timeout) {
    giveBack();
    const auto microseconds = static_cast<guint64>(timeout.count()) * 1000;
    Arrival arrival;
    shown_ = arv_stream_timeout_pop_buffer(stream_.get(), microseconds);
    if (gone_) {
        throw Failure(name_ + ": the camera is gone (unplugged, or taken by another program)");
    }
    if (shown_ != nullptr) {
        const std::uint64_t id = arv_buffer_get_frame_id(shown_);
        // Numbers of GigE Vision begin anew after 65535, which is no gap.
        missing_ += lastId_ != 0 && id > lastId_ + 1 ? id - lastId_ - 1 : 0;
        lastId_ = id;
        if (arv_buffer_get_status(shown_) == ARV_BUFFER_STATUS_SUCCESS) {
            arrival.frame = frameIn(shown_);
        } else {
            ++damaged_;
        }
    }
    arrival.lost = newlyLost();
    return arrival;
}

// Aravis' camera in this process. What 0.8 draws by itself has red and blue exchanged in RG and BG frames, and
// nothing in packed ones; so the scene is ours. Frames that were drawn from outside are said to hold 0 bytes.
class SimulatedCamera final : public AravisCamera {
public:
    explicit SimulatedCamera(double rate) : AravisCamera("Fake_1", rate) {
        setName("simulated camera");
        arv_fake_camera_set_fill_pattern(fake(), &SimulatedCamera::fill, this);
    }
    // No frame is drawn any more once there is no stream.
    ~SimulatedCamera() override { SimulatedCamera::stop(); }
    std::vector<kro::PixelFormat> formats() override { return sceneFormats(); }
    void stop() override {
        AravisCamera::stop();
        drawn_ = 0;
    }

protected:
    // Its description knows formats of bytes only, the camera behind it takes any.
    void setFormat(kro::PixelFormat format) override {
        arv_fake_camera_write_register(fake(), ARV_FAKE_CAMERA_REGISTER_PIXEL_FORMAT, static_cast<guint32>(format));
    }
    // Rows of whole bytes in every packing.
    SizeBounds bounds() override {
        SizeBounds bounds = AravisCamera::bounds();
        bounds.step = {4, 2};
        return bounds;
    }
    std::size_t filled(ArvBuffer*) const override { return payload(); }

private:
    ArvFakeCamera* fake() const { return arv_fake_device_get_fake_camera(ARV_FAKE_DEVICE(device())); }
    static void fill(ArvBuffer* buffer, void* camera, guint32, guint32, ArvPixelFormat format) {
        const Mode mode{static_cast<kro::PixelFormat>(format),
                        {arv_buffer_get_image_width(buffer), arv_buffer_get_image_height(buffer)}};
        void* const data = const_cast<void*>(arv_buffer_get_data(buffer, nullptr));
        drawScene(data, mode, static_cast<SimulatedCamera*>(camera)->drawn_++);
    }

    std::atomic<std::uint64_t> drawn_{0};
};

}  // namespace

std::unique_ptr<Camera> openAravisCamera(const std::string& id, double rate) {
    if (id == simulatedId) {
        arv_enable_interface("Fake");
        return std::make_unique<SimulatedCamera>(rate);
    }
    return std::make_unique<AravisCamera>(id, rate);
}

std::vector<std::string> aravisCameras() {
    arv_update_device_list();
    std::vector<std::string> found;
    for (unsigned i = 0; i < arv_get_n_devices(); ++i) {
        found.push_back(std::string("--aravis ") + arv_get_device_id(i) + " (" + arv_get_device_vendor(i) + " " +
                        arv_get_device_model(i) + ")");
    }
    return found;
}

}  // namespace kro_camera
