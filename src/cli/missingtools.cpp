// SPDX-License-Identifier: MIT
#include "cli/missingtools.h"

#include "cli/exitstatus.h"
#include "runner/resources.h"

#include <QCoreApplication>

namespace filmwright {

bool checkTools(const QStringList &names)
{
    bool allThere = true;
    for (const QString &name : names) {
        if (!resourcePath(name).isNull())
            continue;
        allThere = false;
        printProblem(QCoreApplication::translate("checkTools",
                                                 "the tool %1 was not found; it was looked for in "
                                                 "%2 and in the folders of PATH")
                         .arg(name, resourceFolders().join(QStringLiteral(", "))));
    }
    return allThere;
}

} // namespace filmwright
