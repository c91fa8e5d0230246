#pragma once

#include <cstdint>

using type_code = uint32_t;

namespace platform {

// 'DATA' as the BeOS compilers read a multi-character literal: the first
// character is the most significant byte.
constexpr uint32_t FourCC(const char (&code)[5])
{
    return (uint32_t(uint8_t(code[0])) << 24) | (uint32_t(uint8_t(code[1])) << 16)
           | (uint32_t(uint8_t(code[2])) << 8) | uint32_t(uint8_t(code[3]));
}

static_assert(FourCC("DATA") == 0x44415441);

} // namespace platform

inline constexpr type_code B_ANY_TYPE = platform::FourCC("ANYT");
inline constexpr type_code B_ASCII_TYPE = platform::FourCC("TEXT");
inline constexpr type_code B_BOOL_TYPE = platform::FourCC("BOOL");
inline constexpr type_code B_CHAR_TYPE = platform::FourCC("CHAR");
inline constexpr type_code B_COLOR_8_BIT_TYPE = platform::FourCC("CLRB");
inline constexpr type_code B_DOUBLE_TYPE = platform::FourCC("DBLE");
inline constexpr type_code B_FLOAT_TYPE = platform::FourCC("FLOT");
inline constexpr type_code B_GRAYSCALE_8_BIT_TYPE = platform::FourCC("GRYB");
inline constexpr type_code B_INT16_TYPE = platform::FourCC("SHRT");
inline constexpr type_code B_INT32_TYPE = platform::FourCC("LONG");
inline constexpr type_code B_INT64_TYPE = platform::FourCC("LLNG");
inline constexpr type_code B_INT8_TYPE = platform::FourCC("BYTE");
inline constexpr type_code B_MEDIA_PARAMETER_GROUP_TYPE = platform::FourCC("BMCG");
inline constexpr type_code B_MEDIA_PARAMETER_TYPE = platform::FourCC("BMCT");
inline constexpr type_code B_MEDIA_PARAMETER_WEB_TYPE = platform::FourCC("BMCW");
inline constexpr type_code B_MESSAGE_TYPE = platform::FourCC("MSGG");
inline constexpr type_code B_MESSENGER_TYPE = platform::FourCC("MSNG");
inline constexpr type_code B_MIME_TYPE = platform::FourCC("MIME");
inline constexpr type_code B_MIME_STRING_TYPE = platform::FourCC("MIMS");
inline constexpr type_code B_MONOCHROME_1_BIT_TYPE = platform::FourCC("MNOB");
inline constexpr type_code B_OBJECT_TYPE = platform::FourCC("OPTR");
inline constexpr type_code B_OFF_T_TYPE = platform::FourCC("OFFT");
inline constexpr type_code B_PATTERN_TYPE = platform::FourCC("PATN");
inline constexpr type_code B_POINTER_TYPE = platform::FourCC("PNTR");
inline constexpr type_code B_POINT_TYPE = platform::FourCC("BPNT");
inline constexpr type_code B_RAW_TYPE = platform::FourCC("RAWT");
inline constexpr type_code B_RECT_TYPE = platform::FourCC("RECT");
inline constexpr type_code B_REF_TYPE = platform::FourCC("RREF");
inline constexpr type_code B_RGB_32_BIT_TYPE = platform::FourCC("RGBB");
inline constexpr type_code B_RGB_COLOR_TYPE = platform::FourCC("RGBC");
inline constexpr type_code B_SIZE_T_TYPE = platform::FourCC("SIZT");
inline constexpr type_code B_SSIZE_T_TYPE = platform::FourCC("SSZT");
inline constexpr type_code B_STRING_TYPE = platform::FourCC("CSTR");
inline constexpr type_code B_TIME_TYPE = platform::FourCC("TIME");
inline constexpr type_code B_UINT16_TYPE = platform::FourCC("USHT");
inline constexpr type_code B_UINT32_TYPE = platform::FourCC("ULNG");
inline constexpr type_code B_UINT64_TYPE = platform::FourCC("ULLG");
inline constexpr type_code B_UINT8_TYPE = platform::FourCC("UBYT");

// A Linux extended attribute that does not follow the typed-attribute
// convention: shown under its full name and copied byte for byte.
inline constexpr type_code B_XATTR_TYPE = platform::FourCC("XATR");
