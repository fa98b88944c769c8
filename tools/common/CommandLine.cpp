#include "common/CommandLine.h"

#include "common/Process.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace deckmate::tools {

namespace {

template <class Number>
std::optional<Number> parsed(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

template <class Number>
Number within(const std::string& option, const std::string& text, Number smallest, Number largest) {
    const std::optional<Number> value = parsed<Number>(text);
    // Not a number is not inside, either.
    if (!value || !(*value >= smallest && *value <= largest)) {
        throw CLI::ValidationError(option, "\"" + CommandLine::asGiven(text) +
                                               "\" is not a number from " +
                                               CLI::detail::to_string(smallest) + " to " +
                                               CLI::detail::to_string(largest));
    }
    return *value;
}

constexpr char mark = '\1';

/// With any number of marks in front, so that a name that begins with one is told from a marked
/// one.
bool isInBrackets(std::string_view argument) {
    argument.remove_prefix(std::min(argument.find_first_not_of(mark), argument.size()));
    return argument.starts_with('[') && argument.ends_with(']');
}

/// The argument, or the value in an argument like --option=value, with a mark if it is in brackets.
std::string marked(std::string argument, bool isValue) {
    const bool isOption = !isValue && argument.starts_with("--");
    const std::size_t start = isOption ? argument.find('=') + 1 : 0; // the whole without '='
    if (isInBrackets(std::string_view(argument).substr(start))) {
        argument.insert(start, 1, mark);
    }
    return argument;
}

/// Names an option and its value, and leaves what it excludes to the manual.
class PlainFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string type = option->get_type_name();
        return type.empty() ? "" : " " + type;
    }
};

} // namespace

CommandLine::CommandLine(const std::string& name, const std::string& description)
    : CLI::App(description, name) {
    set_version_flag("--version", name + " " + DECKMATE_VERSION);
    formatter(std::make_shared<PlainFormatter>());
    get_formatter()->column_width(22);
}

std::optional<int> CommandLine::run(int argc, char** argv) {
    std::vector<std::string> arguments;
    bool isValue = false; // behind "--" even what looks like an option is none
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(marked(argv[i], isValue));
        isValue = isValue || arguments.back() == "--";
        // The parser would take the next argument for the value of "--option=".
        if (!isValue && arguments.back().starts_with("--") && arguments.back().ends_with('=')) {
            arguments.back().pop_back();
            arguments.emplace_back();
        }
    }
    std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
    try {
        parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return exit(error) == 0 ? allDone : wrongUsage;
    }
    return std::nullopt;
}

std::string CommandLine::asGiven(std::string value) {
    if (value.starts_with(mark) && isInBrackets(value)) {
        value.erase(0, 1);
    }
    return value;
}

double numberWithin(const std::string& option, const std::string& text, double smallest,
                    double largest) {
    return within(option, text, smallest, largest);
}

std::uint64_t wholeNumberWithin(const std::string& option, const std::string& text,
                                std::uint64_t smallest, std::uint64_t largest) {
    return within(option, text, smallest, largest);
}

} // namespace deckmate::tools
