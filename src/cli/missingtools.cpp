// SPDX-License-Identifier: MIT
#include "cli/missingtools.h"

#include "cli/exitstatus.h"
#include "runner/resources.h"

namespace filmwright {

bool checkTools(const QStringList &names)
{
    const QStringList missing = missingTools(names);
    for (const QString &sentence : missing)
        printError(sentence);
    return missing.isEmpty();
}

} // namespace filmwright
