// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The baseline of the program's size: loads and saves one file with each library that the program links, in the
// simplest way, and does nothing else.

#include <cstdint>
#include <cstdio>
#include <nettle/base64.h>
#include <nettle/siv-cmac.h>
#include <pugixml.hpp>
#include <string>
#include <tinyxml.h>

namespace
{

bool CopyWithTinyXml(const char* to, const char* from)
{
    TiXmlDocument document;
    return document.LoadFile(from) && document.SaveFile(to);
}

bool CopyWithPugiXml(const char* to, const char* from)
{
    pugi::xml_document document;
    return document.load_file(from) && document.save_file(to);
}

bool Decipher(std::string& text)
{
    const std::uint8_t key[SIV_CMAC_AES256_KEY_SIZE] = {};
    siv_cmac_aes256_ctx cipher;
    siv_cmac_aes256_set_key(&cipher, key);

    std::uint8_t bytes[512];
    std::uint8_t plain[512];
    std::size_t size = sizeof bytes;
    base64_decode_ctx decoder;
    base64_decode_init(&decoder);
    if (base64_decode_update(&decoder, &size, bytes, text.size(), text.data()) == 0 || size < SIV_DIGEST_SIZE)
        return false;
    const std::size_t length = size - SIV_DIGEST_SIZE;
    if (siv_cmac_aes256_decrypt_message(&cipher, 0, nullptr, 0, nullptr, length, plain, bytes) == 0)
        return false;
    text.assign(plain, plain + length);
    return true;
}

std::string Encipher(const std::string& text)
{
    const std::uint8_t key[SIV_CMAC_AES256_KEY_SIZE] = {};
    siv_cmac_aes256_ctx cipher;
    siv_cmac_aes256_set_key(&cipher, key);

    std::uint8_t bytes[512];
    const std::size_t size = text.size() + SIV_DIGEST_SIZE;
    siv_cmac_aes256_encrypt_message(&cipher, 0, nullptr, 0, nullptr, size, bytes,
                                    reinterpret_cast<const std::uint8_t*>(text.data()));
    char encoded[BASE64_ENCODE_RAW_LENGTH(sizeof bytes)];
    base64_encode_raw(encoded, size, bytes);
    return std::string(encoded, BASE64_ENCODE_RAW_LENGTH(size));
}

bool CopyWithNettle(const char* to, const char* from)
{
    char buffer[256];
    std::FILE* const in = std::fopen(from, "rb");
    if (in == nullptr)
        return false;
    std::string text(buffer, std::fread(buffer, 1, sizeof buffer, in));
    std::fclose(in);
    if (!Decipher(text))
        text = Encipher(text);

    std::FILE* const out = std::fopen(to, "wb");
    if (out == nullptr)
        return false;
    std::fwrite(text.data(), 1, text.size(), out);
    return std::fclose(out) == 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
        return 2;
    return CopyWithTinyXml(arguments[1], arguments[2]) && CopyWithPugiXml(arguments[1], arguments[2]) &&
                   CopyWithNettle(arguments[1], arguments[2])
               ? 0
               : 1;
}
