// A call of the entry for views that tests may spoil.
#pragma once

#include "view_support.hpp"

// A call that would succeed; tests spoil one thing, or several to see which is found first.
struct ViewCall {
    Size size{6, 9};
    ViewSource frame{4096};
    ViewPicture pixels{4096};
    KroSourceView source{};
    KroPictureView picture{};
    KroViewOptions options = noOptions;

    explicit ViewCall(const char* input = "BayerRG12", const char* output = "RGBa16", bool alphaPlane = false) {
        const reference::InputFormat& format = inputNamed(input);
        frame.hold(format, size, numbersFor(format, noOptions, Content::noise, size, 1), Spacing::exact, false,
                   guard::Placement::againstEnd);
        source = frame.view();
        picture = pixels.lay(outputNamed(output), size, Spacing::exact, guard::Placement::againstEnd,
                             guard::Fill::one, alphaPlane);
    }
    int32_t run() const { return kro::convertView(kro::bestKernels(), &source, &picture, &options); }
    void expect(int32_t status, const char* what) const {
        EXPECT_EQ(status, run()) << what;
        if (status != KRO_OK) {
            EXPECT_TRUE(pixels.untouched()) << what;
        }
    }
};
