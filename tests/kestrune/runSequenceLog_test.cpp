// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The system log: the reports of a run that it gets, and those that it must never get.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

#include "bundledPlatform.h"
#include "logSocket.h"
#include "phoneImage.h"

namespace
{

constexpr char kKeyFile[] = "/phone/factory/certs/pwcipher.key";
const std::string kKey(128, '5');

/// A system log that accepts streams, as some daemons do.
class LogStream
{
public:
    LogStream(const std::string& path, int backlog) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        path.copy(address_.sun_path, sizeof address_.sun_path - 1);
        EXPECT_EQ(bind(socket_, Address(), sizeof address_), 0) << path;
        EXPECT_EQ(listen(socket_, backlog), 0);
    }

    ~LogStream()
    {
        (void)close(socket_);
        for (const int connection : connections_)
            (void)close(connection);
    }
    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;

    /// Connects until the queue is full.
    void FillBacklog()
    {
        for (;;) {
            const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            connections_.push_back(connection);
            if (connect(connection, Address(), sizeof address_) != 0)
                return;
        }
    }

    /// The messages of the waiting connections, each as "<priority>ident: text" without the time of day, and its end.
    std::vector<std::string> Messages() const
    {
        std::vector<std::string> messages;
        (void)fcntl(socket_, F_SETFL, O_NONBLOCK);
        for (int connection = -1; (connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            std::string message(1 << 16, '\0');
            const ssize_t length = recv(connection, message.data(), message.size(), MSG_DONTWAIT);
            message.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
            constexpr std::size_t kTimeLength = 16; // "Jan  1 00:00:00 "
            message.erase(message.find('>') + 1, kTimeLength);
            messages.push_back(message);
            (void)close(connection);
        }
        return messages;
    }

private:
    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address_); }

    sockaddr_un address_ = {AF_UNIX, ""};
    int socket_;
    std::vector<int> connections_;
};

/// A phone whose table pass and password pass both need the key. With the user's lock on, the table pass enciphers; with
/// only the factory's on, the password pass does.
void PutSecrets(PhoneImage& phone, const std::string& userLock, const std::string& factoryLock)
{
    phone.Put("/config/user/user.ini", "[PhoneSetting]\nEnLock=" + userLock +
                                           "\n[Feature]\nRingbackTimeout=90\n[Web]\nA=one\nB=two\n"
                                           "C=NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=" + factoryLock + "\n");
    phone.Put("/phone/resource/encryptconfig.xml", "<l><e file='/config/user/user.ini' section='Web' key='A'/>"
                                                   "<e file='/config/user/user.ini' section='Web' key='B'/></l>");
    phone.Put("/phone/resource/kestrune.xml",
              "<t><r srcFile='/config/user/user.ini' srcSec='Web' srcKey='C'/>"
              "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='A' srcEncrypt='1'/>"
              "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='B' srcEncrypt='1'/>"
              "</t>");
}

/// The last message of a run, whatever it says.
testing::Matcher<const std::string&> EndOf(const std::string& mode)
{
    const std::string words = mode == "fix-ups-only" ? "another mode" : "mode " + mode;
    return testing::ContainsRegex("^<1[24]>kestrune: " + words + ": ");
}

bool IsAboutEqualLocks(const std::string& message)
{
    return message.find("No need trans password file") != std::string::npos;
}

ProcessResult RunWithin(const std::string& seconds, const PhoneImage& phone, const std::string& mode)
{
    std::vector<std::string> command = phone.Command({mode});
    command.insert(command.begin(), {"timeout", "-s", "KILL", seconds});
    return RunProcess(command, phone.Environment());
}

} // namespace

TEST(RunSequenceLog, TheSystemLogGetsEveryReportUnderTheProgramsName)
{
    // Priority: facility user is 8, and the level is added.
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.RunWith({});
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<14>kestrune: Usage: \n#/kestrune [all|dev|pwd]\n"));

    phone.PutFolder("/config/user/user.ini"); // which does not load
    phone.Run("pwd");
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: Can's load user's inifile!\n", EndOf("pwd")));
    EXPECT_THAT(phone.Reports(), testing::ElementsAre("app_log 60/4: Can's load user's inifile!"));
}

TEST(RunSequenceLog, ASystemLogThatNobodyReadsHoldsUpNothing)
{
    // More certificates than the daemon's queue has places; each reports itself.
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    constexpr std::size_t kCertificates = 700;
    for (std::size_t i = 0; i < kCertificates; ++i)
        phone.Put("/phone/factory/certs/phoneca/" + std::to_string(i) + ".pem", "");
    phone.PutFolder("/config/certs/phoneca");
    phone.Run("dev");
    EXPECT_THAT(phone.Reports(), testing::Contains(testing::HasSubstr("Sync cert")).Times(kCertificates));
    EXPECT_LT(log.Messages().size(), kCertificates) << "the queue held them all: this test says nothing";
}

TEST(RunSequenceLog, TheSystemLogNeverGetsTraces)
{
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.Put(kKeyFile, kKey);
    phone.Put("/phone/resource/kestrune.xml", "<table/>\n");
    phone.Put("/config/user/user.ini", "[PhoneSetting]\nEnLock=1\n[Account]\nPassword=secret\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=0\n");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><entry file=\"/config/user/user.ini\" section=\"Account\" key=\"Password\"/></list>\n");
    phone.Run("all");
    EXPECT_THAT(phone.Reports(), testing::Contains("etlTrace 2: Decrypt:(secret)->()"));
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: No config translate record!\n", EndOf("all")));
}

TEST(RunSequenceLog, AKeyThatProtectsNothingIsWarnedOfOnceARun)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the bundled cipher";
    using Lines = std::vector<std::string>;
    const Lines kNone;
    const Lines kMissing = {"<12>kestrune: no cipher key " + std::string(kKeyFile) + ": passwords are not protected"};
    const Lines kWritable = {"<12>kestrune: others may write the cipher key " + std::string(kKeyFile)};
    struct Row {
        const char* mode;
        const char* locks; // the user's and the factory's
        mode_t keyMode;    // 0: no key file
        std::string key;
        Lines messages;
    };
    const Row rows[] = {
        {"all", "01", 0, "", kMissing},       {"pwd", "01", 0, "", kMissing},
        {"dev", "11", 0, "", kMissing},       {"all", "10", 0, "", kMissing},
        {"dev", "01", 0, "", kNone}, // nothing is enciphered, only deciphered
        {"pwd", "10", 0, "", kNone},          {"all", "00", 0, "", kNone},
        {"all", "01", 0620, kKey, kWritable}, {"dev", "00", 0620, kKey, kWritable},
        {"pwd", "01", 0602, kKey, kWritable}, {"all", "01", 0600, kKey, kNone},
        {"all", "01", 0644, kKey, kNone},     {"pwd", "01", 0600, "no key", kNone},
        {"fix-ups-only", "01", 0, "", kNone}, {"fix-ups-only", "01", 0666, kKey, kNone},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "mode " << row.mode << ", locks " << row.locks << ", key of " << std::oct
                                        << row.keyMode);
        PhoneImage phone;
        PutSecrets(phone, std::string(1, row.locks[0]), std::string(1, row.locks[1]));
        if (row.keyMode != 0) {
            phone.Put(kKeyFile, row.key);
            ASSERT_EQ(chmod(phone.HostPath(kKeyFile).c_str(), row.keyMode), 0);
        }
        const ScratchFolder folder;
        const LogSocket log(folder.Path("log"));
        phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
        phone.Run(row.mode);
        std::vector<std::string> messages = log.Messages();
        ASSERT_FALSE(messages.empty());
        EXPECT_THAT(messages.back(), EndOf(row.mode));
        messages.pop_back();
        messages.erase(std::remove_if(messages.begin(), messages.end(), IsAboutEqualLocks), messages.end());
        EXPECT_EQ(messages, row.messages);
        EXPECT_THAT(phone.Reports(), testing::Not(testing::Contains(testing::HasSubstr("cipher key"))));
    }
}

TEST(RunSequenceLog, ADaemonThatTakesStreamsGetsTheMessages)
{
    PhoneImage phone;
    const ScratchFolder folder;
    const LogStream log(folder.Path("log"), 16);
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.PutFolder("/config/user/user.ini"); // which does not load
    phone.Run("pwd");
    EXPECT_THAT(log.Messages(),
                testing::ElementsAre(std::string("<12>kestrune: Can's load user's inifile!\n") + '\0', EndOf("pwd")));
    phone.RunWith({});
    EXPECT_THAT(log.Messages(),
                testing::ElementsAre(std::string("<14>kestrune: Usage: \n#/kestrune [all|dev|pwd]\n") + '\0'));
}

TEST(RunSequenceLog, ADaemonWhoseQueueOfStreamsIsFullHoldsUpNothing)
{
    PhoneImage phone;
    const ScratchFolder folder;
    LogStream log(folder.Path("log"), 0);
    log.FillBacklog();
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.PutFolder("/config/certs/phoneca");
    for (int i = 0; i < 10; ++i)
        phone.Put("/phone/factory/certs/phoneca/" + std::to_string(i) + ".pem", "certificate");
    EXPECT_EQ(RunWithin("60", phone, "dev").exitStatus, 0) << "137: it has not ended";
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(phone.Has("/config/certs/phoneca/" + std::to_string(i) + ".pem"));
}

TEST(RunSequenceLog, AZoneThatNamesAPipeHoldsUpNothing)
{
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    ASSERT_EQ(mkfifo(phone.HostPath("/tmp/zone").c_str(), 0600), 0);
    phone.SetEnvironment("TZ", ":/tmp/zone");
    phone.PutFolder("/config/user/user.ini"); // which does not load
    EXPECT_EQ(RunWithin("30", phone, "pwd").exitStatus, 0) << "137: it has not ended";
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: Can's load user's inifile!\n", EndOf("pwd")));
}
