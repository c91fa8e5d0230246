#pragma once

#include <cstdint>

// BeOS status codes. Values are the platform's own, so codes that travel in
// messages or are compared against tables keep their historical meaning.
using status_t = int32_t;

namespace platform {

inline constexpr status_t kGeneralErrorBase = INT32_MIN;
inline constexpr status_t kStorageErrorBase = kGeneralErrorBase + 0x6000;

} // namespace platform

inline constexpr status_t B_OK = 0;
inline constexpr status_t B_ERROR = -1;

inline constexpr status_t B_NO_MEMORY = platform::kGeneralErrorBase + 0;
inline constexpr status_t B_IO_ERROR = platform::kGeneralErrorBase + 1;
inline constexpr status_t B_PERMISSION_DENIED = platform::kGeneralErrorBase + 2;
inline constexpr status_t B_BAD_INDEX = platform::kGeneralErrorBase + 3;
inline constexpr status_t B_BAD_TYPE = platform::kGeneralErrorBase + 4;
inline constexpr status_t B_BAD_VALUE = platform::kGeneralErrorBase + 5;
inline constexpr status_t B_MISMATCHED_VALUES = platform::kGeneralErrorBase + 6;
inline constexpr status_t B_NAME_NOT_FOUND = platform::kGeneralErrorBase + 7;
inline constexpr status_t B_NAME_IN_USE = platform::kGeneralErrorBase + 8;
inline constexpr status_t B_TIMED_OUT = platform::kGeneralErrorBase + 9;
inline constexpr status_t B_INTERRUPTED = platform::kGeneralErrorBase + 10;
inline constexpr status_t B_WOULD_BLOCK = platform::kGeneralErrorBase + 11;
inline constexpr status_t B_CANCELED = platform::kGeneralErrorBase + 12;
inline constexpr status_t B_NO_INIT = platform::kGeneralErrorBase + 13;
inline constexpr status_t B_BUSY = platform::kGeneralErrorBase + 14;
inline constexpr status_t B_NOT_ALLOWED = platform::kGeneralErrorBase + 15;
inline constexpr status_t B_BAD_DATA = platform::kGeneralErrorBase + 16;

inline constexpr status_t B_FILE_ERROR = platform::kStorageErrorBase + 0;
inline constexpr status_t B_FILE_EXISTS = platform::kStorageErrorBase + 2;
inline constexpr status_t B_ENTRY_NOT_FOUND = platform::kStorageErrorBase + 3;
inline constexpr status_t B_NAME_TOO_LONG = platform::kStorageErrorBase + 4;
inline constexpr status_t B_NOT_A_DIRECTORY = platform::kStorageErrorBase + 5;
inline constexpr status_t B_DIRECTORY_NOT_EMPTY = platform::kStorageErrorBase + 6;
inline constexpr status_t B_DEVICE_FULL = platform::kStorageErrorBase + 7;
inline constexpr status_t B_READ_ONLY_DEVICE = platform::kStorageErrorBase + 8;
inline constexpr status_t B_IS_A_DIRECTORY = platform::kStorageErrorBase + 9;
inline constexpr status_t B_NO_MORE_FDS = platform::kStorageErrorBase + 10;
inline constexpr status_t B_CROSS_DEVICE_LINK = platform::kStorageErrorBase + 11;
inline constexpr status_t B_LINK_LIMIT = platform::kStorageErrorBase + 12;
inline constexpr status_t B_BUSTED_PIPE = platform::kStorageErrorBase + 13;
inline constexpr status_t B_UNSUPPORTED = platform::kStorageErrorBase + 14;

namespace platform {

// The one translation from errno to a status code; every call into the C
// library that fails goes through it.
status_t StatusFromErrno(int error);

// StatusFromErrno(errno), for the line right after a failed call.
status_t LastError();

} // namespace platform
