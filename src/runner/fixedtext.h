// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// A number with so many decimals, at most 10, as the C library prints it in any locale: a half is
/// rounded to the even digit (4.5 gives "4"), unlike QString::number().
QString fixedText(double value, int decimals);

} // namespace filmwright
