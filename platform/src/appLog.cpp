#include "appLog.h"

#include <cstdarg>
#include <string>
#include <syslog.h>

#include "reportText.h"

void app_log(int module, int level, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatReport(format, arguments);
    va_end(arguments);

    openlog("kestrune", /*option=*/0, LOG_USER);
    syslog(LOG_USER | level, "%s", text.c_str());
    closelog(); // else its socket would hold a descriptor, and a process may have no other left to save a file

    WriteReport("app_log " + std::to_string(module) + "/" + std::to_string(level) + ": " + text);
}
