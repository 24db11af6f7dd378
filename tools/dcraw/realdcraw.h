// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace dcraw {

/// The program that FILMWRIGHT_DCRAW names, which then does all the work.
std::optional<std::string> forcedDcraw();

/// The first dcraw in the folders of PATH that isn't this very program, under whatever name it is
/// reached.
std::optional<std::string> findRealDcraw();

/// Replaces this process by the real dcraw with the same arguments. Returns only when there is none
/// or it can't be run: then it has said so, and why it was needed. Answers the exit status.
int handOver(char *const argv[], const std::string &error);

} // namespace dcraw
