#include "scratch.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fileBytes.h"
#include "previewError.h"

Scratch::Scratch()
{
    const char* parent = std::getenv("TMPDIR");
    std::string name = std::string(parent == nullptr || *parent == '\0' ? "/tmp" : parent) + "/kestrune-preview-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw PreviewError("cannot make a folder " + name + ": " + std::strerror(errno));
    folder_ = name;
}

Scratch::~Scratch()
{
    std::error_code ignored; // nobody is left to tell
    std::filesystem::remove_all(folder_, ignored);
}

std::string ReadWhole(const std::filesystem::path& path, std::size_t mostBytes)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        throw PreviewError("cannot read " + path.string());

    std::string bytes;
    char block[65536];
    ssize_t size = 0;
    while ((size = read(file.Number(), block, sizeof block)) > 0) {
        bytes.append(block, static_cast<std::size_t>(size));
        if (bytes.size() > mostBytes)
            throw PreviewError(path.string() + " has more than " + std::to_string(mostBytes) + " bytes");
    }
    if (size < 0)
        throw PreviewError("cannot read " + path.string() + ": " + std::strerror(errno));
    return bytes;
}

void WriteWhole(const std::filesystem::path& path, const std::string& bytes, Readers readers)
{
    const mode_t bits = readers == Readers::Owner ? 0600 : 0666;
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, bits);
    const Descriptor file(descriptor);
    if (!file.IsOpen() || !WriteAll(file.Number(), bytes))
        throw PreviewError("cannot write " + path.string() + ": " + std::strerror(errno));
}
