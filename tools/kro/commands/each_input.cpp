#include "commands/each_input.hpp"

#include "support/failure.hpp"
#include "terminal/console.hpp"

namespace cli {

bool eachInput(const std::vector<std::string>& inputs, const std::function<void(const std::string&)>& work) {
    bool good = true;
    for (const std::string& input : inputs) {
        try {
            work(input);
        } catch (const OutputGone&) {
            throw;
        } catch (const UsageFailure& failure) {
            if (inputs.size() == 1) {
                throw;
            }
            console::error(failure.what());
            good = false;
        } catch (const Failure& failure) {
            console::error(failure.what());
            good = false;
        }
    }
    return good;
}

}  // namespace cli
