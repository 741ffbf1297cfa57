#include "guess/hint.hpp"

#include "guess/guess.hpp"
#include "guess/wording.hpp"
#include "support/failure.hpp"

namespace cli::guess {

namespace {

// Empty where the bytes tell nothing, or cannot be read twice.
std::string hintFor(const InputFile& file) {
    if (file.isStream()) {
        return "";
    }
    try {
        const std::vector<Answer> answers = answersFor(readMaterial(file));
        return answers.empty() ? ""
                               : "; its bytes look like " + meaning(answers.front()) + " (" +
                                     wordFor(answers.front().certainty) + "), kro guess says more";
    } catch (const Failure&) {
        return "";
    }
}

}  // namespace

FrameLayout layoutOrHint(const InputFile& file, const FrameRequest& request) {
    try {
        return layoutOf(file, request);
    } catch (const UnknownLayout& failure) {
        throw UsageFailure(failure.what() + hintFor(file));
    }
}

}  // namespace cli::guess
