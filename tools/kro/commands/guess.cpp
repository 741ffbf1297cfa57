#include "commands/guess.hpp"

#include <cstdio>

#include "commands/each_input.hpp"
#include "guess/guess.hpp"
#include "support/failure.hpp"

namespace cli {

namespace {

using guess::Answer;
using guess::Material;

constexpr std::size_t mostShown = 6;

std::string convertLine(const std::string& input, const Answer& answer) {
    const guess::Geometry& rows = answer.shape.geometry;
    std::string line = "kro convert " + input + " -f " + answer.formatName(answer.phase()) + " -s " + answer.size();
    if (answer.shape.padding() != 0) {
        line += " --stride " + std::to_string(rows.stride);
    }
    if (rows.layout->bigEndian) {
        line += " --big-endian";
    }
    if (rows.start != 0) {
        line += " --skip " + std::to_string(rows.start);
    }
    return line;
}

void guessFile(const std::string& input) {
    const Material material = guess::readMaterial(InputFile(input));
    std::vector<Answer> answers = guess::answersFor(material);
    answers.resize(std::min(answers.size(), mostShown));
    for (const Answer& a : answers) {
        std::printf("%s score %.4f\n", convertLine(input, a).c_str(), a.score);
    }
}

}  // namespace

int guessFrames(const GuessRequest& request) {
    return eachInput(request.inputs, [&](const std::string& input) { guessFile(input); }) ? exitOk : exitFailed;
}

}  // namespace cli
