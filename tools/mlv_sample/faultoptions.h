// SPDX-License-Identifier: MIT
// The options that say what is wrong with a camera.
#pragma once

#include "mlv_sample/settings.h"

#include <functional>
#include <map>
#include <string_view>

namespace sample {

using Setter = std::function<void(Settings &, std::string_view)>;

/// What each of them does with its value; throws UsageError.
const std::map<std::string_view, Setter> &faultSetters();

} // namespace sample
