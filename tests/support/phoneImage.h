// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "process.h"
#include "scratchFolder.h"

/// What most whole runs read and write.
inline constexpr char kUserIni[] = "/config/user/user.ini";

/// @return the path of the account with that number, 0 to 16
std::string Account(int number);

/// A phone's file system in a scratch folder, and the only place that maps such a folder to the device's paths: given
/// these files, when the real program runs in a mode, then the result is these files and these reports.
///
/// The program runs in a bubblewrap sandbox that shows it the image's folders as /config, /phone and /tmp, the
/// machine's programs read-only, and nothing else. It cannot detect that it is tested.
class PhoneImage
{
public:
    /// An empty phone: /config, /phone and /tmp without a file.
    PhoneImage();

    /// @param path  device path such as "/config/user/user.ini"; its folders are created
    void Put(const std::string& path, const std::string& bytes);
    void PutFolder(const std::string& path);

    /// Fills the image with the example phone.
    void PutExamplePhone();

    void Remove(const std::string& path);
    bool Has(const std::string& path) const;
    std::string Get(const std::string& path) const;

    /// @return the path on this machine of the device path
    std::string HostPath(const std::string& path) const;

    /// Sets a variable in the environment of later runs, which is otherwise almost empty.
    void SetEnvironment(const std::string& name, const std::string& value);

    /// Adds options to the sandbox of later runs, such as {"--dir", "/outside"}.
    void AddSandboxOptions(const std::vector<std::string>& options);

    /// Runs "kestrune <mode>". The test fails if the exit status is not 0 or a temporary file is left.
    const ProcessResult& Run(const std::string& mode);

    /// Runs the program with any arguments.
    const ProcessResult& RunWith(const std::vector<std::string>& arguments);

    /// The command that starts the program in its sandbox, for tests that start it themselves.
    ///
    /// @param program  its path in the sandbox
    std::vector<std::string> Command(const std::vector<std::string>& arguments,
                                     const std::string& program = "/kestrune") const;

    /// The same, but with that name as the program's own name (argv[0]).
    std::vector<std::string> CommandWithName(const std::string& name, const std::vector<std::string>& arguments) const;

    /// Whether the program is built for another machine and runs under an emulator.
    static bool IsEmulated();

    std::vector<std::string> Environment() const;

    /// The reports of the last run on standard error, a line each, without the scoped entry traces, which
    /// `ReportsWithScopes` has.
    std::vector<std::string> Reports() const;
    std::vector<std::string> ReportsWithScopes() const;

    /// The lines of the last run on standard output.
    std::vector<std::string> Output() const;

    /// After a run: the file contains these bytes, or is missing.
    void Expect(const std::string& path, const std::string& bytes);
    void ExpectMissing(const std::string& path);

    /// After a run: all files that no `Expect...` has named since then are as before the last run: names, kinds, bytes,
    /// permission bits and link targets.
    void ExpectNothingElseChanged();

private:
    std::vector<std::string> Sandboxed(const std::vector<std::string>& start,
                                       const std::vector<std::string>& arguments) const;

    using Snapshot = std::map<std::string, std::string>;
    Snapshot TakeSnapshot() const;

    ScratchFolder folder_;
    std::vector<std::string> environment_;
    std::vector<std::string> sandboxOptions_;
    Snapshot before_;
    std::set<std::string> expected_;
    ProcessResult result_;
};
