// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "xmlFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <tinyxml.h>

#include "fileBytes.h"
#include "fileReplacement.h"
#include "integerText.h"
#include "xmlGuard.h"

namespace
{

using StreamPointer = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// The output of the library, in memory. Not the standard memory stream: it sets no error when memory runs out, and the
/// library would not notice that half of its document is missing.
class MemoryStream
{
public:
    MemoryStream() : stream_(fopencookie(this, "w", {nullptr, &Append, nullptr, nullptr}), &std::fclose) {}
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    bool IsOpen() const { return stream_ != nullptr; }
    std::FILE* File() const { return stream_.get(); }
    bool Finish() { return std::fclose(stream_.release()) == 0; }
    const std::string& Bytes() const { return bytes_; }

private:
    static ssize_t Append(void* self, const char* data, std::size_t size)
    {
        std::string& bytes = static_cast<MemoryStream*>(self)->bytes_;
        if (bytes.size() + size > kLargestPrintedXml)
            return 0; // a failed write, which the stream remembers
        try {
            bytes.append(data, size);
            return static_cast<ssize_t>(size);
        } catch (...) {
            return 0;
        }
    }

    std::string bytes_; // before the stream, which still writes to it when it is closed
    StreamPointer stream_;
};

/// Converts line ends as the library does for files but not for texts. The text ends at its first zero byte, as it does
/// for the library.
void NormaliseLineEnds(std::string& text)
{
    text.resize(std::min(text.size(), text.find('\0')));
    if (text.find('\r') == std::string::npos)
        return;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && i > 0 && text[i - 1] == '\r')
            continue; // the CR before it has already become a line feed
        text[kept++] = text[i];
    }
    text.resize(kept);
    std::replace(text.begin(), text.end(), '\r', '\n');
}

/// Parses the text in place: from a stream, the library would copy it twice.
const char* Parse(TiXmlDocument& document, std::string& text)
{
    // The library may read a few bytes past a text that ends inside a UTF-8 character.
    constexpr std::size_t kPadding = 8;
    text.append(kPadding, '\0');
    document.Clear();
    document.Parse(text.c_str());
    return document.Error() ? document.ErrorDesc() : nullptr;
}

const char* Load(TiXmlDocument& document, const char* path)
{
    std::string text;
    switch (ReadFile(path, text)) {
    case ReadResult::Done:
        break;
    case ReadResult::TooLarge:
        return RefuseSize(kLargestFile + 1);
    case ReadResult::Missing:
    case ReadResult::Unreadable:
        return "Failed to open file"; // the library's own words
    }
    NormaliseLineEnds(text);
    if (const char* refusal = RefuseXml(text))
        return refusal;
    return Parse(document, text);
}

} // namespace

int LoadXmlFile(TiXmlDocument& document, const char* path, std::string* errorDesc)
{
    const char* failure = Load(document, path);
    if (failure != nullptr && errorDesc != nullptr)
        *errorDesc = failure;
    return failure == nullptr;
}

int SaveXmlFile(const TiXmlDocument& document, const char* path, const char* sourcePath)
{
    MemoryStream stream;
    if (!stream.IsOpen() || !document.SaveFile(stream.File()) || !stream.Finish())
        return 0;
    return sourcePath == nullptr ? ReplaceFile(path, stream.Bytes())
                                 : ReplaceDerivedFile(path, stream.Bytes(), sourcePath);
}

std::string TinyXml_GetStringAttr(const TiXmlElement* element, const char* name, const char* defaultText)
{
    const char* text = element->Attribute(name);
    return text == nullptr ? defaultText : text;
}

int TinyXml_GetIntAttr(const TiXmlElement* element, const char* name, int defaultValue)
{
    const char* text = element->Attribute(name);
    return text == nullptr ? defaultValue : ParseInt32(text);
}

bool QueryXmlFlag(const TiXmlElement* element, const char* name, bool& flag)
{
    const char* text = element->Attribute(name);
    return text != nullptr && *text != '\0' && element->QueryBoolAttribute(name, &flag) == TIXML_SUCCESS;
}
