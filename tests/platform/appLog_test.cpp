// The application log: its form on standard error and in the system log.

#include "appLog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "phoneImage.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{

std::string TextOf(void (*report)())
{
    CaptureStderr();
    report();
    return GetCapturedStderr();
}

/// A system log that only listens.
class SystemLog
{
public:
    explicit SystemLog(const std::string& path) : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << path;
    }

    ~SystemLog() { (void)close(socket_); }
    SystemLog(const SystemLog&) = delete;
    SystemLog& operator=(const SystemLog&) = delete;

    /// The messages that have come, each as "<priority>ident: text", without the time of day.
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

} // namespace

TEST(AppLog, StandardErrorShowsModuleLevelAndText)
{
    EXPECT_EQ(TextOf([] { app_log(60, 4, "Can's load user's inifile!\n"); }),
              "app_log 60/4: Can's load user's inifile!\n");
    EXPECT_EQ(TextOf([] { app_log(kAppLogModule, kAppLogInformation, "Sync cert %s\n", "a.pem"); }),
              "app_log 60/6: Sync cert a.pem\n");
    EXPECT_EQ(TextOf([] { app_log(kAppLogModule, kAppLogWarning, "%d%%", -1); }), "app_log 60/4: -1%\n");
    EXPECT_EQ(TextOf([] { app_log(1, 0, "x"); }), "app_log 1/0: x\n");
    EXPECT_EQ(TextOf([] { app_log(60, 7, "%s", ""); }), "app_log 60/7: \n");
    EXPECT_EQ(TextOf([] { app_log(60, 6, "two\nlines\n"); }), "app_log 60/6: two\nlines\n");
}

TEST(AppLog, AnArgumentIsNeverAFormat)
{
    EXPECT_EQ(TextOf([] { app_log(60, 6, "Sync cert %s\n", "%s%n100%"); }), "app_log 60/6: Sync cert %s%n100%\n");
}

TEST(AppLog, ALongTextComesOutWhole)
{
    const std::string megabyte(1 << 20, 'x');
    CaptureStderr();
    app_log(60, 6, "<%s>", megabyte.c_str());
    EXPECT_TRUE(GetCapturedStderr() == "app_log 60/6: <" + megabyte + ">\n");
}

TEST(AppLog, AClosedOrFullStandardErrorChangesNothing)
{
    for (const bool isFull : {true, false}) {
        const pid_t child = fork();
        if (child == 0) {
            if (isFull)
                (void)dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            else
                (void)close(STDERR_FILENO);
            app_log(60, 6, "text");
            _exit(7);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 7);
    }
}

TEST(AppLog, TheSystemLogGetsEveryReportUnderTheProgramsName)
{
    // Priority: facility user is 8, and the level is added.
    PhoneImage phone;
    const ScratchFolder folder;
    const SystemLog log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.RunWith({});
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<14>kestrune: Usage: \n#/kestrune [all|dev|pwd]\n"));

    phone.PutFolder("/config/user/user.ini"); // which does not load
    phone.Run("pwd");
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: Can's load user's inifile!\n"));
    EXPECT_THAT(phone.Reports(), testing::ElementsAre("app_log 60/4: Can's load user's inifile!"));
}

TEST(AppLog, ASystemLogThatNobodyReadsHoldsUpNothing)
{
    // More certificates than the daemon's queue has places; each reports itself.
    PhoneImage phone;
    const ScratchFolder folder;
    const SystemLog log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    constexpr std::size_t kCertificates = 700;
    for (std::size_t i = 0; i < kCertificates; ++i)
        phone.Put("/phone/factory/certs/phoneca/" + std::to_string(i) + ".pem", "");
    phone.PutFolder("/config/certs/phoneca");
    phone.Run("dev");
    EXPECT_THAT(phone.Reports(), testing::Contains(testing::HasSubstr("Sync cert")).Times(kCertificates));
    EXPECT_LT(log.Messages().size(), kCertificates) << "the queue held them all: this test says nothing";
}

TEST(AppLog, TheSystemLogNeverGetsTraces)
{
    PhoneImage phone;
    const ScratchFolder folder;
    const SystemLog log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.Put("/phone/resource/kestrune.xml", "<table/>\n");
    phone.Put("/config/user/user.ini", "[PhoneSetting]\nEnLock=1\n[Account]\nPassword=secret\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=0\n");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><entry file=\"/config/user/user.ini\" section=\"Account\" key=\"Password\"/></list>\n");
    phone.Run("all");
    EXPECT_THAT(phone.Reports(), testing::Contains("etlTrace 2: Decrypt:(secret)->()"));
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: No config translate record!\n"));
}
