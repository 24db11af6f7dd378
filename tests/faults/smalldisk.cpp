// SPDX-License-Identifier: MIT
#include "smalldisk.h"

#include <QFile>
#include <QTest>

#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

constexpr qint64 page = 4096;

} // namespace

bool SmallDisk::isPossible()
{
    static const bool has = geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
                            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return has;
}

SmallDisk::SmallDisk(const QString &folder, qint64 bytes)
    : m_folder(folder)
{
    const QByteArray options =
        "mode=0700,size=" + QByteArray::number((bytes + page - 1) / page * page);
    QCOMPARE(mount("none", QFile::encodeName(folder).constData(), "tmpfs", 0, options.constData()),
             0);
}

SmallDisk::~SmallDisk()
{
    umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH);
}

QString SmallDisk::filler() const
{
    return m_folder + QStringLiteral("/filler");
}

void SmallDisk::fill(qint64 free)
{
    QFile file(filler());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    // What the run writes or removes meanwhile counts, too.
    for (qint64 excess = available() - free; excess > 0; excess = available() - free)
        if (file.write(QByteArray(excess, '\0')) <= 0)
            return;
}

qint64 SmallDisk::available() const
{
    struct statvfs space = {};
    return statvfs(QFile::encodeName(m_folder).constData(), &space) == 0
               ? static_cast<qint64>(space.f_bavail * space.f_frsize)
               : 0;
}

void SmallDisk::empty()
{
    QFile::remove(filler());
}
