// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "systemLog.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include "descriptor.h"

namespace
{

/// Whether there is a log daemon with a place for a message within that time. One that stands still must not hold up the
/// run: the C library would wait for it without end.
bool HasPlaceWithin(int milliseconds)
{
    const Descriptor log(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, _PATH_LOG);
    if (!log.IsOpen())
        return false;
    if (connect(log.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return errno == EPROTOTYPE; // somebody listens, but to streams, which the C library tries next

    pollfd place = {log.Number(), POLLOUT, 0};
    return poll(&place, 1, milliseconds) != 0;
}

} // namespace

void WriteToSystemLog(int level, const std::string& text)
{
    static int patienceMilliseconds = 1000; // static, because a run waits only once
    if (!HasPlaceWithin(patienceMilliseconds)) {
        patienceMilliseconds = 0;
        return;
    }
    openlog("kestrune", /*option=*/0, LOG_USER);
    syslog(LOG_USER | level, "%s", text.c_str());
    closelog(); // else its socket would hold a descriptor, and a process may have no other left to save a file
}
