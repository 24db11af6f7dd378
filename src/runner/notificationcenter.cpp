// SPDX-License-Identifier: MIT
#include "runner/notificationcenter.h"

namespace filmwright {

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

} // namespace filmwright

#include "moc_notificationcenter.cpp"
