#include "commands/guess.hpp"

#include <cstdio>

#include "commands/each_input.hpp"
#include "guess/guess.hpp"
#include "guess/sheet.hpp"
#include "guess/wording.hpp"
#include "output/output_file.hpp"
#include "pictures/picture_file.hpp"
#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

namespace {

using guess::Answer;
using guess::Material;

constexpr std::size_t mostShown = 6;

void print(const std::string& input, const Material& material, const std::vector<Answer>& answers) {
    for (std::size_t i = 0; i < answers.size(); i++) {
        std::printf("%zu. %s: %s\n", i + 1, guess::wordFor(answers[i].certainty), guess::meaning(answers[i]).c_str());
        for (const std::string& reason : guess::reasonsFor(answers[i], material.length)) {
            std::printf("     %s\n", reason.c_str());
        }
        std::printf("   %s\n", guess::convertLine(input, answers[i], material.length).c_str());
    }
}

void requireSheet(const GuessRequest& request) {
    if (request.sheet.empty()) {
        return;
    }
    if (request.inputs.size() > 1) {
        throw UsageFailure("--sheet shows the answers for one file, not for " +
                           std::to_string(request.inputs.size()));
    }
    const FileType* type = fileTypeOf(request.sheet);
    if (type == nullptr || type->kind != FileKind::png) {
        throw UsageFailure("--sheet " + request.sheet + ": expected a name that ends in .png");
    }
}

void putSheet(const GuessRequest& request, const Material& material, const std::vector<Answer>& answers) {
    guardAgainstInterrupts();
    writeFile(request.sheet, encodePicture(guess::sheetOfAnswers(material, answers), requireFileType("png")),
              !request.noClobber);
    console::note(request.sheet + ": the answers, row by row");
}

void guessFile(const std::string& input, const GuessRequest& request) {
    const InputFile file(input);
    if (!request.sheet.empty()) {
        checkTarget(request.sheet, {file.id()}, !request.noClobber);
    }
    const Material material = guess::readMaterial(file);
    std::vector<Answer> answers = guess::answersFor(material);
    if (answers.empty()) {
        throw Failure(file.shownName() + ": nothing in its " + std::to_string(material.length) +
                      " bytes looks like rows of samples; compressed, or nothing but noise?");
    }
    answers.resize(std::min(answers.size(), mostShown));
    std::printf("%s: %llu bytes\n", file.shownName().c_str(), static_cast<unsigned long long>(material.length));
    print(input, material, answers);
    if (!request.sheet.empty()) {
        putSheet(request, material, answers);
    }
}

}  // namespace

int guessFrames(const GuessRequest& request) {
    requireSheet(request);
    return eachInput(request.inputs, [&](const std::string& input) { guessFile(input, request); }) ? exitOk
                                                                                                   : exitFailed;
}

}  // namespace cli
