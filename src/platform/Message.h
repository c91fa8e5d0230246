#pragma once

#include "platform/EntryRef.h"
#include "platform/Errors.h"
#include "platform/TypeCodes.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// Asks a window to close (and the application, to quit).
inline constexpr uint32_t B_QUIT_REQUESTED = platform::FourCC("_QRQ");
// Entries handed to the application to show ("refs").
inline constexpr uint32_t B_REFS_RECEIVED = platform::FourCC("_RRC");

namespace platform {

// A message: a `what` code and named fields, each holding one or more values of
// one type. Messages are plain data, copied freely between threads; a pointer
// field is carried as a value and never dereferenced here.
class Message
{
public:
    explicit Message(uint32_t what = 0)
        : what(what)
    {}

    uint32_t what;

    status_t AddString(const std::string &name, const std::string &value);
    status_t AddInt8(const std::string &name, int8_t value);
    status_t AddInt32(const std::string &name, int32_t value);
    status_t AddInt64(const std::string &name, int64_t value);
    status_t AddBool(const std::string &name, bool value);
    status_t AddFloat(const std::string &name, float value);
    status_t AddDouble(const std::string &name, double value);
    status_t AddRef(const std::string &name, const entry_ref &value);
    // Takes the reference's strings over: a million of them are not copied.
    status_t AddRef(const std::string &name, entry_ref &&value);
    status_t AddPointer(const std::string &name, const void *value);

    // B_NAME_NOT_FOUND when there is no such field, B_BAD_TYPE when the field
    // holds another type, B_BAD_INDEX when the index is past its values.
    status_t FindString(const std::string &name, int32_t index, std::string *value) const;
    status_t FindInt8(const std::string &name, int32_t index, int8_t *value) const;
    status_t FindInt32(const std::string &name, int32_t index, int32_t *value) const;
    status_t FindInt64(const std::string &name, int32_t index, int64_t *value) const;
    status_t FindBool(const std::string &name, int32_t index, bool *value) const;
    status_t FindFloat(const std::string &name, int32_t index, float *value) const;
    status_t FindDouble(const std::string &name, int32_t index, double *value) const;
    status_t FindRef(const std::string &name, int32_t index, entry_ref *value) const;
    status_t FindPointer(const std::string &name, int32_t index, void **value) const;

    status_t FindString(const std::string &name, std::string *value) const;
    status_t FindInt8(const std::string &name, int8_t *value) const;
    status_t FindInt32(const std::string &name, int32_t *value) const;
    status_t FindInt64(const std::string &name, int64_t *value) const;
    status_t FindBool(const std::string &name, bool *value) const;
    status_t FindFloat(const std::string &name, float *value) const;
    status_t FindDouble(const std::string &name, double *value) const;
    status_t FindRef(const std::string &name, entry_ref *value) const;
    status_t FindPointer(const std::string &name, void **value) const;

    status_t ReplaceString(const std::string &name, int32_t index, const std::string &value);
    status_t ReplaceInt8(const std::string &name, int32_t index, int8_t value);
    status_t ReplaceInt32(const std::string &name, int32_t index, int32_t value);
    status_t ReplaceInt64(const std::string &name, int32_t index, int64_t value);
    status_t ReplaceBool(const std::string &name, int32_t index, bool value);
    status_t ReplaceFloat(const std::string &name, int32_t index, float value);
    status_t ReplaceDouble(const std::string &name, int32_t index, double value);
    status_t ReplaceRef(const std::string &name, int32_t index, const entry_ref &value);
    status_t ReplacePointer(const std::string &name, int32_t index, const void *value);

    // Removes one value; the field goes when its last value goes.
    status_t RemoveData(const std::string &name, int32_t index = 0);
    status_t RemoveName(const std::string &name);
    void MakeEmpty();

    bool IsEmpty() const { return fFields.empty(); }
    bool HasField(const std::string &name) const { return FieldIndex(name) >= 0; }
    // The type and number of values of a field.
    status_t GetInfo(const std::string &name, type_code *type, int32_t *count) const;
    // The index-th field of `type` (B_ANY_TYPE for all), in the order fields were added.
    status_t GetInfo(type_code type,
                     int32_t index,
                     std::string *name,
                     type_code *foundType,
                     int32_t *count) const;
    int32_t CountNames(type_code type = B_ANY_TYPE) const;

private:
    using Value = std::
        variant<std::string, int8_t, int32_t, int64_t, bool, float, double, entry_ref, const void *>;

    struct Field
    {
        std::string name;
        type_code type;
        std::vector<Value> values;
    };

    int FieldIndex(const std::string &name) const;
    status_t AddValue(const std::string &name, type_code type, Value value);
    status_t ValueAt(const std::string &name,
                     type_code type,
                     int32_t index,
                     const Value **value) const;
    status_t ReplaceValue(const std::string &name, type_code type, int32_t index, Value value);
    template<typename T>
    status_t FindAs(const std::string &name, type_code type, int32_t index, T *out) const;

    std::vector<Field> fFields;
};

} // namespace platform
