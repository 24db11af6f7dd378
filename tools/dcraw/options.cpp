// SPDX-License-Identifier: MIT
#include "dcraw/options.h"

#include "dcraw/notcovered.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace dcraw {
namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Takes the arguments one after the other.
class ArgumentReader
{
public:
    explicit ArgumentReader(std::span<const char *const> arguments)
        : m_arguments(arguments)
    {
    }

    bool atEnd() const { return m_arguments.empty(); }

    std::string_view next()
    {
        require(!atEnd(), "is not complete");
        const std::string_view argument = m_arguments.front();
        m_arguments = m_arguments.subspan(1);
        return argument;
    }

    /// Digits and at most one point, which isn't the first: what every reader of numbers takes
    /// alike.
    double number()
    {
        const std::string_view text = next();
        const auto points = std::count(text.begin(), text.end(), '.');
        const auto digits = std::count_if(text.begin(), text.end(), isDigit);
        require(!text.empty() && text.size() <= 20 && isDigit(text.front()) && points <= 1 &&
                    static_cast<std::size_t>(points + digits) == text.size(),
                "has a number of an unusual form");
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }

    /// One or two digits that make a number of the range.
    int wholeNumber(int least, int most)
    {
        const std::string_view text = next();
        require((text.size() == 1 || text.size() == 2) &&
                    std::all_of(text.begin(), text.end(), isDigit),
                "has a number of an unusual form");
        int value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        require(value >= least && value <= most, "asks for another method");
        return value;
    }

private:
    std::span<const char *const> m_arguments;
};

double brightness(ArgumentReader &arguments)
{
    const double value = arguments.number();
    require(value >= 0.01 && value < 10000, "asks for an extreme brightness");
    return value;
}

Gamma gamma(ArgumentReader &arguments)
{
    const double power = arguments.number();
    const double slope = arguments.number();
    require(power > 0, "asks for an extreme curve");
    const Gamma gamma{1 / power, slope};
    require(gamma.exponent >= 0.05 && gamma.exponent <= 20 && slope <= 1000,
            "asks for an extreme curve");
    return gamma;
}

int colourSpace(ArgumentReader &arguments)
{
    const std::string_view text = arguments.next();
    require(text.size() == 1 && text.front() >= '0' && text.front() <= '6',
            "asks for another colour space");
    return text.front() - '0';
}

/// What is only needed to judge the arguments as a whole.
struct Switches
{
    bool tiff = false;            ///< -T
    bool fixedBrightness = false; ///< -W
};

void readOption(char letter, ArgumentReader &arguments, Options &options, Switches &switches)
{
    switch (letter) {
    case 'T':
        switches.tiff = true;
        break;
    case 'W':
        switches.fixedBrightness = true;
        break;
    case 'w':
        options.cameraWhiteBalance = true;
        break;
    case '6':
        options.sixteenBits = true;
        break;
    case '4':
        options.sixteenBits = true;
        options.gamma = Gamma{1, 1};
        switches.fixedBrightness = true;
        break;
    case 'h':
        options.halfSize = true;
        break;
    case 'H':
        options.highlights = arguments.wholeNumber(0, 3);
        break;
    case 'q':
        options.quality = arguments.wholeNumber(0, 3);
        require(options.quality == 0 || options.quality == 3, "asks for another method");
        break;
    case 'b':
        options.brightness = brightness(arguments);
        break;
    case 'r': {
        auto &multipliers = options.multipliers.emplace();
        std::generate(multipliers.begin(), multipliers.end(),
                      [&arguments] { return arguments.number(); });
        break;
    }
    case 'o':
        options.colourSpace = colourSpace(arguments);
        break;
    case 'g':
        options.gamma = gamma(arguments);
        break;
    case 'm':
        options.medianPasses = arguments.wholeNumber(0, 9);
        break;
    case 'P':
        options.badPixels = arguments.next();
        break;
    default:
        throw NotCovered("has other options");
    }
}

} // namespace

Options parseOptions(std::span<const char *const> arguments)
{
    ArgumentReader reader(arguments);
    Options options;
    Switches switches;
    while (!reader.atEnd()) {
        const std::string_view argument = reader.next();
        if (!argument.starts_with('-') && !argument.starts_with('+')) {
            options.file = argument;
            require(reader.atEnd(), "names several files");
            break;
        }
        // Further letters behind the first have no effect in the real program, a plus sign has
        // another one.
        require(argument.size() == 2 && argument.front() == '-', "has other options");
        readOption(argument[1], reader, options, switches);
    }
    require(!options.file.empty(), "names no file");
    require(switches.tiff, "asks for no TIFF");
    // These two treatments of highlights exclude the automatic brightening by themselves.
    require(switches.fixedBrightness || options.highlights == 1 || options.highlights == 3,
            "asks for automatic brightness");
    return options;
}

std::string outputPath(const std::string &file)
{
    return file.substr(0, file.rfind('.')) + ".tiff";
}

} // namespace dcraw
