// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "systemLog.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include "descriptor.h"
#include "patience.h"

namespace
{

constexpr char kIdent[] = "kestrune";

/// Static, because a run waits only once for a stalled log daemon.
Patience patience(1000);

enum class LogKind { None, Datagrams, Stream };

/// Connects without waiting.
///
/// @return 0; otherwise the error number
int Connect(int socket)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, _PATH_LOG);
    return connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
}

/// Whether the log daemon can accept a datagram in time. The C library would wait forever for a stuck daemon.
LogKind FindPlaceForDatagram()
{
    const Descriptor log(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!log.IsOpen())
        return LogKind::None;
    if (const int error = Connect(log.Number()))
        return error == EPROTOTYPE ? LogKind::Stream : LogKind::None;
    return patience.WaitForRoom(log.Number()) ? LogKind::Datagrams : LogKind::None;
}

/// The message as the C library writes it to a stream: priority, time, ident, text, and a zero byte.
std::string StreamMessage(int level, const std::string& text)
{
    char date[sizeof "Jan 01 00:00:00 "] = "";
    const std::time_t now = std::time(nullptr);
    std::tm parts = {};
    if (localtime_r(&now, &parts) != nullptr)
        (void)std::strftime(date, sizeof date, "%h %e %T ", &parts);
    std::string message = "<" + std::to_string(LOG_USER | level) + ">" + date + kIdent + ": " + text;
    message.push_back('\0');
    return message;
}

/// The C library would wait forever if the queue of connections is full.
void SendToStream(const std::string& message)
{
    const Descriptor log(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!log.IsOpen())
        return;
    while (const int error = Connect(log.Number())) {
        if (error != EAGAIN || !patience.WaitForSlice())
            return;
    }
    // A new connection has room, or there will never be any.
    (void)send(log.Number(), message.data(), message.size(), MSG_NOSIGNAL);
}

} // namespace

void WriteToSystemLog(int level, const std::string& text)
{
    switch (FindPlaceForDatagram()) {
    case LogKind::None:
        return;
    case LogKind::Stream:
        SendToStream(StreamMessage(level, text));
        return;
    case LogKind::Datagrams:
        break;
    }
    openlog(kIdent, /*option=*/0, LOG_USER);
    syslog(LOG_USER | level, "%s", text.c_str());
    closelog(); // otherwise its socket keeps a descriptor that may be needed to save a file
}
