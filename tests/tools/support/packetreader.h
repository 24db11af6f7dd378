// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

#include <array>

#include <sys/socket.h>
#include <unistd.h>

/// The far end of an output, where each write() arrives as one packet.
class PacketReader
{
public:
    PacketReader()
    {
        const int size = 1 << 20;
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, m_ends.data()) != 0 ||
            ::setsockopt(m_ends[0], SOL_SOCKET, SO_SNDBUF, &size, sizeof size) != 0)
            qFatal("there are no sockets");
    }
    ~PacketReader()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    PacketReader(const PacketReader &) = delete;
    PacketReader &operator=(const PacketReader &) = delete;

    int descriptor() const { return m_ends[0]; }

    QByteArrayList packets() const
    {
        QByteArrayList list;
        std::array<char, 65536> buffer;
        for (auto size = receive(buffer); size > 0; size = receive(buffer))
            list.append(QByteArray(buffer.data(), static_cast<qsizetype>(size)));
        return list;
    }

private:
    ssize_t receive(std::array<char, 65536> &buffer) const
    {
        return ::recv(m_ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
    }

    std::array<int, 2> m_ends{};
};
