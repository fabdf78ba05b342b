// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "keyedCipher.h"

#include <cstdint>
#include <cstring>
#include <nettle/base64.h>
#include <string_view>
#include <vector>

#include "cipherKey.h"
#include "passwordCipher.h"

namespace
{

constexpr std::string_view kNonce = "kestrune";
constexpr std::size_t kIvSize = SIV_DIGEST_SIZE;
constexpr std::size_t kLongestMessage = kIvSize + kLongestPassword;

using Bytes = std::vector<std::uint8_t>;

const std::uint8_t* AsBytes(std::string_view text)
{
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

bool IsSevenBit(const char* text)
{
    for (; *text != '\0'; ++text) {
        if (static_cast<unsigned char>(*text) >= 0x80)
            return false;
    }
    return true;
}

/// Base64 without the padding that the library adds.
std::string_view Encode(const Bytes& message, char (&buffer)[BASE64_ENCODE_RAW_LENGTH(kLongestMessage)])
{
    base64_encode_raw(buffer, message.size(), message.data());
    const std::string_view padded(buffer, BASE64_ENCODE_RAW_LENGTH(message.size()));
    return padded.substr(0, padded.find_last_not_of('=') + 1);
}

/// Accepts only the exact form that `Encode` produces: the library's decoder would also accept white space, padding and
/// stray low bits in the last character.
bool Decode(std::string_view token, Bytes& message)
{
    if (token.size() >= kPasswordBufferSize)
        return false;
    message.resize(BASE64_DECODE_LENGTH(token.size()));
    base64_decode_ctx context;
    base64_decode_init(&context);
    std::size_t size = message.size();
    if (base64_decode_update(&context, &size, message.data(), token.size(), token.data()) == 0 ||
        size > kLongestMessage)
        return false;
    message.resize(size);
    char again[BASE64_ENCODE_RAW_LENGTH(kLongestMessage)];
    return Encode(message, again) == token;
}

int FailToEncrypt(const char* text, char* output)
{
    const std::size_t size = std::strlen(text);
    output[0] = '\0';
    if (size < kPasswordBufferSize)
        std::memcpy(output, text, size + 1);
    return -1;
}

} // namespace

int KeyedCipher::Encrypt(const char* text, char* output) const
{
    const std::string_view plain(text);
    if (plain.empty()) {
        output[0] = '\0';
        return 0;
    }
    if (plain.size() > kLongestPassword || !IsSevenBit(text) || !MayEncipher())
        return FailToEncrypt(text, output);

    Bytes message(kIvSize + plain.size());
    siv_cmac_aes256_encrypt_message(&Key().context, kNonce.size(), AsBytes(kNonce), 0, nullptr, message.size(),
                                    message.data(), AsBytes(plain));
    char buffer[BASE64_ENCODE_RAW_LENGTH(kLongestMessage)];
    const std::string_view token = Encode(message, buffer);
    std::memcpy(output, token.data(), token.size());
    output[token.size()] = '\0';
    return 0;
}

int KeyedCipher::Decrypt(const char* text, char* output) const
{
    output[0] = '\0';
    const std::string_view token(text);
    if (token.empty())
        return 0;
    Bytes message;
    if (!Decode(token, message) || message.size() <= kIvSize || !Key().isUsable)
        return -1;

    // The size checks above ensure that it fits into the buffer.
    char plain[kLongestPassword + 1] = {};
    const std::size_t size = message.size() - kIvSize;
    if (siv_cmac_aes256_decrypt_message(&Key().context, kNonce.size(), AsBytes(kNonce), 0, nullptr, size,
                                        reinterpret_cast<std::uint8_t*>(plain), message.data()) == 0)
        return -1;
    if (std::strlen(plain) != size || !IsSevenBit(plain))
        return -1;
    std::memcpy(output, plain, size + 1);
    return 0;
}

const KeyedCipher::KeySchedule& KeyedCipher::Key() const
{
    if (!key_) {
        KeySchedule made = {};
        CipherKey key = {};
        std::string warning;
        const CipherKeyKind kind = LoadCipherKey(keyFile_, key, &warning);
        made.isUsable = kind != CipherKeyKind::Unusable;
        made.isDevelopment = kind == CipherKeyKind::Development;
        if (warn_ != nullptr && !warning.empty())
            warn_(warning);
        if (made.isUsable)
            siv_cmac_aes256_set_key(&made.context, key.data());
        key_ = made;
    }
    return *key_;
}

/// Warns here and not where the key is read: the table pass tries to decipher every value, which discloses nothing.
bool KeyedCipher::MayEncipher() const
{
    if (!Key().isDevelopment)
        return Key().isUsable;
    const bool isAllowed = developmentKey_ == DevelopmentKey::MayEncipher;
    if (warn_ != nullptr && !isDevelopmentKeyWarnedOf_)
        warn_(std::string("no cipher key ") + keyFile_ +
              (isAllowed ? ": passwords are not protected" : ": passwords are not enciphered"));
    isDevelopmentKeyWarnedOf_ = true;
    return isAllowed;
}
