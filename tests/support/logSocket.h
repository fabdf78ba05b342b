// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

/// A system log that only listens.
class LogSocket
{
public:
    explicit LogSocket(const std::string& path) : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << path;
    }

    ~LogSocket() { (void)close(socket_); }
    LogSocket(const LogSocket&) = delete;
    LogSocket& operator=(const LogSocket&) = delete;

    /// The received messages, each as "<priority>ident: text", without the time of day.
    std::vector<std::string> Messages() const
    {
        std::vector<std::string> messages;
        std::string buffer(1 << 16, '\0');
        for (;;) {
            const ssize_t length = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (length < 0)
                return messages;
            std::string message = buffer.substr(0, static_cast<std::size_t>(length));
            constexpr std::size_t kTimeLength = 16; // "Jan  1 00:00:00 "
            message.erase(message.find('>') + 1, kTimeLength);
            messages.push_back(message);
        }
    }

private:
    int socket_;
};
