/**
 * SECTION:element-krodemosaic
 *
 * Turns raw frames (mosaics of all four phases, and grey frames) into pictures.
 *
 *     gst-launch-1.0 videotestsrc ! video/x-bayer,format=rggb ! krodemosaic ! videoconvert ! autovideosink
 */
#include "krodemosaic.hpp"

#include <gst/base/gstbasetransform.h>
#include <gst/video/video.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>

#include "formats.hpp"
#include "kro/threads.hpp"
#include "rows.hpp"

GST_DEBUG_CATEGORY_STATIC(krodemosaic_debug);
#define GST_CAT_DEFAULT krodemosaic_debug

namespace {

using krogst::FrameCaps;

enum Property : guint { algorithmProperty = 1, threadsProperty };
constexpr gint usualAlgorithm = KRO_EDGE;
constexpr guint usualThreads = 1;
constexpr guint mostThreads = 1024;

// May change while frames come; under the object's lock.
struct Settings {
    kro::Algorithm algorithm = static_cast<kro::Algorithm>(usualAlgorithm);
    guint threads = usualThreads;
};

// What the streaming thread has.
struct Stream {
    FrameCaps frame{};
    GstVideoInfo picture{};
    std::optional<kro::Threads> threads;
};

}  // namespace

struct KroDemosaic {
    GstBaseTransform parent;
    Settings settings;
    Stream stream;
};

struct KroDemosaicClass {
    GstBaseTransformClass parent;
};

G_DEFINE_TYPE(KroDemosaic, kro_demosaic, GST_TYPE_BASE_TRANSFORM)
GST_ELEMENT_REGISTER_DEFINE(krodemosaic, "krodemosaic", GST_RANK_NONE, kro_demosaic_get_type())

namespace {

KroDemosaic* self(void* object) { return reinterpret_cast<KroDemosaic*>(object); }
GstBaseTransformClass* parentClass() { return GST_BASE_TRANSFORM_CLASS(kro_demosaic_parent_class); }

// ---- properties ----

GType algorithmType() {
    static const GEnumValue values[] = {
        {KRO_NEAREST, "Nearest neighbour", "nearest"},
        {KRO_BILINEAR, "Bilinear", "bilinear"},
        {KRO_EDGE, "Edge-directed: follows edges of the green", "edge"},
        {KRO_FINE, "Fine: gradients weigh colour differences; nearer to the scene, slower", "fine"},
        {0, nullptr, nullptr},
    };
    static const GType type = g_enum_register_static("KroDemosaicAlgorithm", values);
    return type;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* property) {
    Settings& settings = self(object)->settings;
    GST_OBJECT_LOCK(object);
    if (id == algorithmProperty) {
        settings.algorithm = static_cast<kro::Algorithm>(g_value_get_enum(value));
    } else if (id == threadsProperty) {
        settings.threads = g_value_get_uint(value);
    } else {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, property);
    }
    GST_OBJECT_UNLOCK(object);
}

Settings settingsOf(KroDemosaic* element) {
    GST_OBJECT_LOCK(element);
    const Settings settings = element->settings;
    GST_OBJECT_UNLOCK(element);
    return settings;
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* property) {
    const Settings settings = settingsOf(self(object));
    if (id == algorithmProperty) {
        g_value_set_enum(value, static_cast<gint>(settings.algorithm));
    } else if (id == threadsProperty) {
        g_value_set_uint(value, settings.threads);
    } else {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, property);
    }
}

// ---- caps ----

GstCaps* transformCaps(GstBaseTransform* transform, GstPadDirection direction, GstCaps* caps, GstCaps* filter) {
    GstCaps* const all = direction == GST_PAD_SINK ? krogst::pictureCapsOf(caps) : krogst::frameCapsOf(caps);
    GST_LOG_OBJECT(transform, "%" GST_PTR_FORMAT " can become %" GST_PTR_FORMAT, caps, all);
    if (filter == nullptr) {
        return all;
    }
    GstCaps* const some = gst_caps_intersect_full(filter, all, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(all);
    return some;
}

GstCaps* fixateCaps(GstBaseTransform* transform, GstPadDirection direction, GstCaps* caps, GstCaps* offered) {
    FrameCaps frame;
    if (direction == GST_PAD_SINK && krogst::readFrameCaps(caps, frame)) {
        offered = krogst::bestPictures(frame, offered);
    }
    offered = gst_caps_fixate(offered);
    GST_DEBUG_OBJECT(transform, "for %" GST_PTR_FORMAT " chose %" GST_PTR_FORMAT, caps, offered);
    return offered;
}

gboolean setCaps(GstBaseTransform* transform, GstCaps* frames, GstCaps* pictures) {
    Stream& stream = self(transform)->stream;
    if (!krogst::readFrameCaps(frames, stream.frame) || !gst_video_info_from_caps(&stream.picture, pictures) ||
        krogst::pictureFormat(GST_VIDEO_INFO_FORMAT(&stream.picture)) == nullptr) {
        GST_ERROR_OBJECT(transform, "cannot turn %" GST_PTR_FORMAT " into %" GST_PTR_FORMAT, frames, pictures);
        return FALSE;
    }
    GST_INFO_OBJECT(transform, "%" GST_PTR_FORMAT " becomes %" GST_PTR_FORMAT, frames, pictures);
    return TRUE;
}

gboolean transformSize(GstBaseTransform*, GstPadDirection direction, GstCaps*, gsize, GstCaps* others, gsize* size) {
    GstVideoInfo picture;
    FrameCaps frame;
    if (direction == GST_PAD_SINK && gst_video_info_from_caps(&picture, others)) {
        *size = GST_VIDEO_INFO_SIZE(&picture);
        return TRUE;
    }
    if (direction == GST_PAD_SRC && krogst::readFrameCaps(others, frame)) {
        *size = frame.usualSize();
        return TRUE;
    }
    return FALSE;
}

// ---- buffers ----

// Senders may put rows at any distance.
gboolean proposeAllocation(GstBaseTransform* transform, GstQuery* downstream, GstQuery* query) {
    if (!parentClass()->propose_allocation(transform, downstream, query)) {
        return FALSE;
    }
    if (downstream != nullptr) {
        gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    }
    return TRUE;
}

// A pool of pictures: fresh memory would cost more than the conversion.
gboolean decideAllocation(GstBaseTransform* transform, GstQuery* query) {
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstVideoInfo picture;
    if (caps == nullptr || !gst_video_info_from_caps(&picture, caps)) {
        return FALSE;
    }
    GstBufferPool* pool = nullptr;
    guint size = 0, least = 0, most = 0;
    const bool offered = gst_query_get_n_allocation_pools(query) > 0;
    if (offered) {
        gst_query_parse_nth_allocation_pool(query, 0, &pool, &size, &least, &most);
    }
    size = MAX(size, static_cast<guint>(GST_VIDEO_INFO_SIZE(&picture)));
    if (pool == nullptr) {
        pool = gst_video_buffer_pool_new();
    }
    GstStructure* const config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, size, least, most);
    if (gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr)) {
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    }
    gst_buffer_pool_set_config(pool, config);
    if (offered) {
        gst_query_set_nth_allocation_pool(query, 0, pool, size, least, most);
    } else {
        gst_query_add_allocation_pool(query, pool, size, least, most);
    }
    gst_object_unref(pool);
    return parentClass()->decide_allocation(transform, query);
}

GstFlowReturn prepareOutput(GstBaseTransform* transform, GstBuffer* frame, GstBuffer** picture) {
    const GstFlowReturn flow = parentClass()->prepare_output_buffer(transform, frame, picture);
    if (flow == GST_FLOW_ERROR) {
        const GstVideoInfo& info = self(transform)->stream.picture;
        GST_ELEMENT_ERROR(transform, RESOURCE, NO_SPACE_LEFT, ("No memory for a picture."),
                          ("%d x %d %s, %" G_GSIZE_FORMAT " bytes", GST_VIDEO_INFO_WIDTH(&info),
                           GST_VIDEO_INFO_HEIGHT(&info), GST_VIDEO_INFO_NAME(&info), GST_VIDEO_INFO_SIZE(&info)));
    }
    return flow;
}

// What says something about the scene stays; what belongs to samples or to their memory does not.
gboolean transformMeta(GstBaseTransform*, GstBuffer*, GstMeta* meta, GstBuffer*) {
    constexpr std::string_view kept[] = {GST_META_TAG_VIDEO_STR, GST_META_TAG_VIDEO_ORIENTATION_STR,
                                         GST_META_TAG_VIDEO_SIZE_STR};
    const gchar* const* tag = gst_meta_api_type_get_tags(meta->info->api);
    while (tag != nullptr && *tag != nullptr) {
        if (std::find(std::begin(kept), std::end(kept), *tag) == std::end(kept)) {
            return FALSE;
        }
        ++tag;
    }
    return TRUE;
}

// ---- conversion ----

void haveThreads(std::optional<kro::Threads>& threads, guint wanted) {
    const guint processors = std::thread::hardware_concurrency();
    const guint count = wanted != 0 ? wanted : MAX(processors, 1U);
    if (count == 1) {
        threads.reset();
    } else if (!threads || threads->count() != count) {
        threads.reset();
        threads.emplace(count);
    }
}

GstFlowReturn convert(KroDemosaic* element, const kro::Frame& frame, const kro::Picture& picture) {
    Stream& stream = element->stream;
    const Settings settings = settingsOf(element);
    kro::Options options;
    options.algorithm = settings.algorithm;
    options.bigEndian = stream.frame.bigEndian;
    options.fullRange = true;  // as GStreamer takes it of all pictures of 16 bits
    std::error_code error;
    haveThreads(stream.threads, settings.threads);
    if (stream.threads) {
        kro::convert(frame, picture, options, *stream.threads, error);
    } else {
        kro::convert(frame, picture, options, error);
    }
    if (error) {
        GST_ELEMENT_ERROR(element, STREAM, FORMAT, ("A frame cannot be converted: %s.", error.message().c_str()),
                          ("%d x %d %s, rows %" G_GINT64_FORMAT " bytes apart", frame.width, frame.height,
                           stream.frame.name, static_cast<gint64>(frame.stride)));
        return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

GstFlowReturn transformBuffer(GstBaseTransform* transform, GstBuffer* in, GstBuffer* out) {
    KroDemosaic* const element = self(transform);
    const krogst::MappedBuffer source(in, GST_MAP_READ), destination(out, GST_MAP_WRITE);
    if (!source || !destination) {
        GST_ELEMENT_ERROR(element, RESOURCE, FAILED,
                          ("Memory of a %s cannot be reached.", source ? "picture" : "frame"), (nullptr));
        return GST_FLOW_ERROR;
    }
    kro::Frame frame;
    kro::Picture picture;
    krogst::Reason reason;
    const bool found = krogst::findFrame(element->stream.frame, source, frame, reason);
    if (!found || !krogst::findPicture(element->stream.picture, destination, picture, reason)) {
        GST_ELEMENT_ERROR(element, STREAM, FORMAT, ("A %s is not what its caps say.", found ? "picture" : "frame"),
                          ("%s", reason.text));
        return GST_FLOW_ERROR;
    }
    try {
        return convert(element, frame, picture);
    } catch (const std::exception& failure) {
        GST_ELEMENT_ERROR(element, RESOURCE, FAILED, ("Threads cannot be started."), ("%s", failure.what()));
        return GST_FLOW_ERROR;
    }
}

gboolean stop(GstBaseTransform* transform) {
    self(transform)->stream.threads.reset();
    return TRUE;
}

// ---- the class ----

void finalize(GObject* object) {
    KroDemosaic* const element = self(object);
    element->stream.~Stream();
    element->settings.~Settings();
    G_OBJECT_CLASS(kro_demosaic_parent_class)->finalize(object);
}

void installProperties(GObjectClass* object) {
    const auto flags =
        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    object->set_property = setProperty;
    object->get_property = getProperty;
    g_object_class_install_property(
        object, algorithmProperty,
        g_param_spec_enum("algorithm", "Algorithm",
                          "How the colours that a mosaic lacks are made; grey frames lack none", algorithmType(),
                          usualAlgorithm, flags));
    g_object_class_install_property(
        object, threadsProperty,
        g_param_spec_uint("n-threads", "Threads",
                          "Threads that share a picture, from about 0.5 Mpixel on (0 = one a processor); "
                          "the bytes are the same",
                          0, mostThreads, usualThreads, flags));
    gst_type_mark_as_plugin_api(algorithmType(), static_cast<GstPluginAPIFlags>(0));
}

void describe(GstElementClass* element) {
    gst_element_class_set_static_metadata(
        element, "Demosaicing (kro)", "Filter/Converter/Video",
        "Turns raw frames (mosaics of 8 to 16 bits, and grey ones) into pictures of 8 or 16 bits. Packed mosaics: "
        "10p, 12p, 14p as in PFNC, lowest bits first; 10packed, 12packed as in GigE Vision; pRAA, pRCC, pREE and the "
        "like as in CSI-2",
        "The kro authors");
    GstCaps* const frames = krogst::frameTemplate();
    GstCaps* const pictures = krogst::pictureTemplate();
    gst_element_class_add_pad_template(element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, frames));
    gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, pictures));
    gst_caps_unref(frames);
    gst_caps_unref(pictures);
}

}  // namespace

static void kro_demosaic_init(KroDemosaic* element) {
    new (&element->settings) Settings;
    new (&element->stream) Stream;
    gst_base_transform_set_qos_enabled(&element->parent, TRUE);
}

static void kro_demosaic_class_init(KroDemosaicClass* type) {
    GST_DEBUG_CATEGORY_INIT(krodemosaic_debug, "krodemosaic", 0, "raw frames to pictures");
    G_OBJECT_CLASS(type)->finalize = finalize;
    installProperties(G_OBJECT_CLASS(type));
    describe(GST_ELEMENT_CLASS(type));
    GstBaseTransformClass* const transform = GST_BASE_TRANSFORM_CLASS(type);
    transform->passthrough_on_same_caps = TRUE;  // grey to grey
    transform->transform_caps = transformCaps;
    transform->fixate_caps = fixateCaps;
    transform->set_caps = setCaps;
    transform->transform_size = transformSize;
    transform->propose_allocation = proposeAllocation;
    transform->decide_allocation = decideAllocation;
    transform->prepare_output_buffer = prepareOutput;
    transform->transform_meta = transformMeta;
    transform->transform = transformBuffer;
    transform->stop = stop;
}
