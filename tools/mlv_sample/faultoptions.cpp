// SPDX-License-Identifier: MIT
#include "mlv_sample/faultoptions.h"

#include "mlv_sample/optionvalues.h"

#include <tuple>

namespace sample {

namespace {

constexpr int mostFaults = 100000;
constexpr int mostLevel = 65535;

/// COLUMNSxLINES:X/Y,X/Y...
Lattice lattice(std::string_view text)
{
    constexpr std::string_view option = "--lattice";
    const auto [size, places] = halves(text, ':');
    Lattice lattice;
    std::tie(lattice.columns, lattice.lines) = numberPair(option, size, 'x', 1, 1000);
    for (const std::string_view item : listItems(places)) {
        const auto [x, y] = halves(item, '/');
        lattice.cell.push_back(
            {number(option, x, 0, lattice.columns - 1), number(option, y, 0, lattice.lines - 1)});
    }
    return lattice;
}

std::uint32_t cameraModel(std::string_view text)
{
    std::uint32_t code = 0;
    const auto digits = text.starts_with("0x") ? text.substr(2) : std::string_view();
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc{} || end != digits.data() + digits.size())
        refuseValue("--model", text);
    return code;
}

} // namespace

const std::map<std::string_view, Setter> &faultSetters()
{
    using Text = std::string_view;
    static const std::map<Text, Setter> table{
        {"--hot",
         [](Settings &s, Text t) { s.faults.hotPixels = number("--hot", t, 0, mostFaults); }},
        {"--cold",
         [](Settings &s, Text t) { s.faults.coldPixels = number("--cold", t, 0, mostFaults); }},
        {"--stuck",
         [](Settings &s, Text t) { s.faults.stuckPixels = number("--stuck", t, 0, mostFaults); }},
        {"--lattice", [](Settings &s, Text t) { s.faults.lattices.push_back(lattice(t)); }},
        {"--lattice-light",
         [](Settings &s, Text t) {
             std::tie(s.faults.latticeRed, s.faults.latticeBlue) =
                 numberPair("--lattice-light", t, '/', 0.0, 10.0);
         }},
        {"--lattice-lines",
         [](Settings &s, Text t) {
             std::tie(s.faults.firstLatticeLine, s.faults.lastLatticeLine) =
                 numberPair("--lattice-lines", t, '-', 0, mostLevel);
         }},
        {"--column-gains",
         [](Settings &s, Text t) {
             readNumbers("--column-gains", t, s.faults.columnGains, 0.5, 2.0);
         }},
        {"--clip", [](Settings &s, Text t) { s.clip = number("--clip", t, 1, mostLevel); }},
        {"--model", [](Settings &s, Text t) { s.cameraModel = cameraModel(t); }},
        {"--recorded-matrix",
         [](Settings &s, Text t) {
             readNumbers("--recorded-matrix", t, s.recordedMatrix, -100000, 100000);
         }},
        {"--light", [](Settings &s, Text t) { readNumbers("--light", t, s.light, 0.0, 2.0); }},
        {"--set-kelvin",
         [](Settings &s, Text t) { s.setKelvin = number("--set-kelvin", t, 1000, 40000); }},
        {"--later-levels",
         [](Settings &s, Text t) {
             std::tie(s.laterBlack, s.laterWhite) =
                 numberPair("--later-levels", t, '/', 0, mostLevel);
         }},
        {"--crop",
         [](Settings &s, Text t) {
             std::tie(s.crop.x, s.crop.y) = numberPair("--crop", t, 'x', 0, 16384);
         }},
        {"--lose", [](Settings &s, Text t) { s.lostChunks = numberList("--lose", t); }},
    };
    return table;
}

} // namespace sample
