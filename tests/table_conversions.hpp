// The pictures of a table of kernels, for the digests of kro selftest.
#pragma once

#include "KRODemosaicing.hpp"
#include "KROView.hpp"
#include "selftest/digests.hpp"

inline cli::Conversions conversionsOf(const kro::Kernels& table) {
    return {[&table](KroContext* handle, const KroImage* frame, KroAlgorithm algorithm, KroImage* picture) {
                return kro::demosaicing(table, handle, frame, algorithm, picture);
            },
            [&table](const KroSourceView* frame, const KroPictureView* picture, const KroViewOptions* options) {
                return kro::convertView(table, frame, picture, options);
            }};
}
