// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "xmlGuard.h"

#include <cctype>
#include <cstring>
#include <string>
#include <tinyxml.h>

#include "fileBytes.h"

namespace
{

constexpr std::size_t kEnd = std::string_view::npos;

bool IsSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool IsNameStart(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 127 || std::isalpha(byte) != 0 || character == '_';
}

bool IsNamePart(char character)
{
    return IsNameStart(character) || std::isdigit(static_cast<unsigned char>(character)) != 0 || character == '-' ||
           character == '.' || character == ':';
}

/// Number of bytes that the library reads as one character of UTF-8 text, judging only by the first byte.
std::size_t CharacterSize(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0xc2 || byte > 0xf4)
        return 1;
    return byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

bool StartsIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    if (text.size() < lowerCase.size())
        return false;
    for (std::size_t i = 0; i < lowerCase.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[i])) != lowerCase[i])
            return false;
    }
    return true;
}

/// One scan of a document. `at_` is the position of the library's read pointer; at the text's end the scan is over,
/// either because the document ends there or because the library would report an error.
class XmlWalk
{
public:
    explicit XmlWalk(std::string_view text) : text_(text) {}

    const char* Run()
    {
        isUtf8_ = StartsWith("\xEF\xBB\xBF");
        isEncodingKnown_ = isUtf8_;
        SkipSpace();
        while (!IsAtEnd() && refusal_ == nullptr) {
            TakeNode();
            SkipSpace();
        }
        return refusal_;
    }

private:
    bool IsAtEnd() const { return at_ >= text_.size(); }
    char Current() const { return IsAtEnd() ? '\0' : text_[at_]; }
    char Following() const { return at_ + 1 < text_.size() ? text_[at_ + 1] : '\0'; }
    // A lead byte at the very end may have moved `at_` past it.
    std::string_view Rest() const { return IsAtEnd() ? std::string_view() : text_.substr(at_); }
    bool StartsWith(std::string_view start) const { return Rest().substr(0, start.size()) == start; }
    void Stop() { at_ = text_.size(); }
    void Refuse(const char* reason) { refusal_ = reason; }

    void SkipSpace()
    {
        for (; !IsAtEnd(); ++at_) {
            // The library treats byte order marks and two non-characters as white space.
            while (isUtf8_ && (StartsWith("\xEF\xBB\xBF") || StartsWith("\xEF\xBF\xBE") || StartsWith("\xEF\xBF\xBF")))
                at_ += 3;
            if (!IsSpace(Current()))
                return;
        }
    }

    /// Moves past the next `end`, searching from `skipped` characters on.
    void SkipBehind(std::string_view end, std::size_t skipped)
    {
        const std::size_t found = text_.find(end, at_ + skipped);
        at_ = found == kEnd ? text_.size() : found + end.size();
    }

    void TakeNode()
    {
        if (Current() != '<')
            TakeText();
        else if (depth_ > 0 && Following() == '/')
            TakeEndTag();
        else if (StartsIgnoringCase(Rest(), "<?xml"))
            TakeDeclaration();
        else if (StartsWith("<!--"))
            SkipBehind("-->", 4);
        else if (StartsWith("<![CDATA["))
            SkipBehind("]]>", 9);
        else if (IsNameStart(Following()))
            TakeStartTag();
        else
            SkipBehind(">", 1); // document types, processing instructions and markup unknown to the library
    }

    void TakeText()
    {
        if (depth_ == 0)
            Stop(); // the library ends the document at text outside the root
        else
            SkipTextUpTo('<');
    }

    void TakeEndTag()
    {
        // If this is not the name of the open element, the library reports an error, and the rest does not matter.
        SkipBehind(">", 2);
        --depth_;
    }

    void TakeStartTag()
    {
        if (++elements_ > kMostElements)
            return Refuse("Document has too many elements.");
        if (depth_ + 1 > kDeepestElement)
            return Refuse("Document nested too deep.");
        ++at_;
        SkipSpace();
        if (!IsNameStart(Current()))
            return Stop();
        SkipName();

        int attributes = 0;
        for (SkipSpace(); !IsAtEnd(); SkipSpace()) {
            if (Current() == '/') {
                Following() == '>' ? static_cast<void>(at_ += 2) : Stop();
                return;
            }
            if (Current() == '>') {
                ++at_;
                ++depth_;
                return;
            }
            if (++attributes > kMostAttributes)
                return Refuse("Element has too many attributes.");
            TakeAttribute();
        }
    }

    void SkipName()
    {
        while (!IsAtEnd() && IsNamePart(Current()))
            ++at_;
    }

    void TakeAttribute()
    {
        SkipSpace();
        if (!IsNameStart(Current()))
            return Stop();
        SkipName();
        SkipSpace();
        if (Current() != '=')
            return Stop();
        ++at_;
        SkipSpace();
        const char quote = Current();
        if (quote == '"' || quote == '\'')
            TakeQuotedValue(quote);
        else
            TakeBareValue();
    }

    void TakeQuotedValue(char quote)
    {
        ++at_;
        SkipTextUpTo(quote);
        ++at_;
    }

    void TakeBareValue()
    {
        for (; !IsAtEnd() && !IsSpace(Current()) && Current() != '/' && Current() != '>'; ++at_) {
            if (Current() == '"' || Current() == '\'')
                return Stop();
        }
    }

    void TakeDeclaration()
    {
        const std::size_t begin = at_;
        at_ += std::strlen("<?xml");
        while (!IsAtEnd() && Current() != '>') {
            SkipSpace();
            if (StartsDeclarationAttribute())
                TakeAttribute();
            else
                SkipWord();
        }
        if (IsAtEnd())
            return;
        ++at_;
        if (depth_ == 0 && !isEncodingKnown_)
            SetEncoding(text_.substr(begin, at_ - begin));
    }

    bool StartsDeclarationAttribute() const
    {
        return StartsIgnoringCase(Rest(), "version") || StartsIgnoringCase(Rest(), "encoding") ||
               StartsIgnoringCase(Rest(), "standalone");
    }

    void SkipWord()
    {
        while (!IsAtEnd() && Current() != '>' && !IsSpace(Current()))
            ++at_;
    }

    /// The library itself parses the declaration, which cannot be nested.
    void SetEncoding(std::string_view declaration)
    {
        TiXmlDocument document;
        document.Parse(std::string(declaration).c_str());
        const TiXmlDeclaration* parsed = document.FirstChild()->ToDeclaration();
        const std::string name = parsed->Encoding();
        isEncodingKnown_ = true;
        isUtf8_ = name.empty() || StartsIgnoringCase(name, "utf-8") || StartsIgnoringCase(name, "utf8");
    }

    /// Skips characters and references as the library reads them: a UTF-8 lead byte consumes the bytes after it, even
    /// if they are the end that is searched for.
    void SkipTextUpTo(char end)
    {
        while (!IsAtEnd() && Current() != end) {
            if (isUtf8_ && CharacterSize(Current()) > 1)
                at_ += CharacterSize(Current());
            else if (Current() == '&')
                TakeReference();
            else
                ++at_;
        }
    }

    void TakeReference()
    {
        if (Following() != '#' || at_ + 2 >= text_.size()) {
            ++at_; // the rest of a named reference reads as text, since none has a character that could end it
            return;
        }
        const bool isHexadecimal = text_[at_ + 2] == 'x';
        const std::size_t semicolon = text_.find(';', at_ + (isHexadecimal ? 3 : 2));
        if (semicolon == kEnd || !EndsInDigits(text_.substr(at_, semicolon - at_), isHexadecimal))
            Stop();
        else
            at_ = semicolon + 1;
    }

    /// The library reads the digits from the semicolon backwards to the nearest "x" or "#", whatever is before it.
    static bool EndsInDigits(std::string_view reference, bool isHexadecimal)
    {
        const std::size_t mark = reference.rfind(isHexadecimal ? 'x' : '#');
        for (const char digit : reference.substr(mark + 1)) {
            const auto byte = static_cast<unsigned char>(digit);
            if (isHexadecimal ? std::isxdigit(byte) == 0 : std::isdigit(byte) == 0)
                return false;
        }
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    bool isUtf8_ = false;
    bool isEncodingKnown_ = false;
    int depth_ = 0;
    int elements_ = 0;
    const char* refusal_ = nullptr;
};

} // namespace

const char* RefuseSize(std::size_t size)
{
    return size > kLargestFile ? "Document too large." : nullptr;
}

const char* RefuseXml(std::string_view text)
{
    return XmlWalk(text).Run();
}
