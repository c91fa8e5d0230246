#include "platform/Message.h"

namespace platform {

int Message::FieldIndex(const std::string &name) const
{
    for (size_t i = 0; i < fFields.size(); i++) {
        if (fFields[i].name == name)
            return int(i);
    }
    return -1;
}

status_t Message::AddValue(const std::string &name, type_code type, Value value)
{
    const int index = FieldIndex(name);
    if (index < 0) {
        fFields.push_back(Field{name, type, {std::move(value)}});
        return B_OK;
    }
    Field &field = fFields[size_t(index)];
    if (field.type != type)
        return B_BAD_TYPE;
    field.values.push_back(std::move(value));
    return B_OK;
}

status_t Message::ValueAt(const std::string &name,
                          type_code type,
                          int32_t index,
                          const Value **value) const
{
    const int fieldIndex = FieldIndex(name);
    if (fieldIndex < 0)
        return B_NAME_NOT_FOUND;
    const Field &field = fFields[size_t(fieldIndex)];
    if (field.type != type)
        return B_BAD_TYPE;
    if (index < 0 || size_t(index) >= field.values.size())
        return B_BAD_INDEX;
    *value = &field.values[size_t(index)];
    return B_OK;
}

status_t Message::ReplaceValue(const std::string &name, type_code type, int32_t index, Value value)
{
    const Value *current = nullptr;
    const status_t status = ValueAt(name, type, index, &current);
    if (status != B_OK)
        return status;
    *const_cast<Value *>(current) = std::move(value);
    return B_OK;
}

template<typename T>
status_t Message::FindAs(const std::string &name, type_code type, int32_t index, T *out) const
{
    const Value *value = nullptr;
    const status_t status = ValueAt(name, type, index, &value);
    if (status == B_OK && out)
        *out = std::get<T>(*value);
    return status;
}

status_t Message::AddString(const std::string &name, const std::string &value)
{
    return AddValue(name, B_STRING_TYPE, value);
}

status_t Message::AddInt8(const std::string &name, int8_t value)
{
    return AddValue(name, B_INT8_TYPE, value);
}

status_t Message::AddInt32(const std::string &name, int32_t value)
{
    return AddValue(name, B_INT32_TYPE, value);
}

status_t Message::AddInt64(const std::string &name, int64_t value)
{
    return AddValue(name, B_INT64_TYPE, value);
}

status_t Message::AddBool(const std::string &name, bool value)
{
    return AddValue(name, B_BOOL_TYPE, value);
}

status_t Message::AddFloat(const std::string &name, float value)
{
    return AddValue(name, B_FLOAT_TYPE, value);
}

status_t Message::AddDouble(const std::string &name, double value)
{
    return AddValue(name, B_DOUBLE_TYPE, value);
}

status_t Message::AddRef(const std::string &name, const entry_ref &value)
{
    return AddValue(name, B_REF_TYPE, value);
}

status_t Message::AddRef(const std::string &name, entry_ref &&value)
{
    return AddValue(name, B_REF_TYPE, std::move(value));
}

status_t Message::AddPointer(const std::string &name, const void *value)
{
    return AddValue(name, B_POINTER_TYPE, value);
}

status_t Message::FindString(const std::string &name, int32_t index, std::string *value) const
{
    return FindAs(name, B_STRING_TYPE, index, value);
}

status_t Message::FindInt8(const std::string &name, int32_t index, int8_t *value) const
{
    return FindAs(name, B_INT8_TYPE, index, value);
}

status_t Message::FindInt32(const std::string &name, int32_t index, int32_t *value) const
{
    return FindAs(name, B_INT32_TYPE, index, value);
}

status_t Message::FindInt64(const std::string &name, int32_t index, int64_t *value) const
{
    return FindAs(name, B_INT64_TYPE, index, value);
}

status_t Message::FindBool(const std::string &name, int32_t index, bool *value) const
{
    return FindAs(name, B_BOOL_TYPE, index, value);
}

status_t Message::FindFloat(const std::string &name, int32_t index, float *value) const
{
    return FindAs(name, B_FLOAT_TYPE, index, value);
}

status_t Message::FindDouble(const std::string &name, int32_t index, double *value) const
{
    return FindAs(name, B_DOUBLE_TYPE, index, value);
}

status_t Message::FindRef(const std::string &name, int32_t index, entry_ref *value) const
{
    return FindAs(name, B_REF_TYPE, index, value);
}

status_t Message::FindPointer(const std::string &name, int32_t index, void **value) const
{
    const void *pointer = nullptr;
    const status_t status = FindAs(name, B_POINTER_TYPE, index, &pointer);
    if (status == B_OK && value)
        *value = const_cast<void *>(pointer);
    return status;
}

status_t Message::FindString(const std::string &name, std::string *value) const
{
    return FindString(name, 0, value);
}

status_t Message::FindInt8(const std::string &name, int8_t *value) const
{
    return FindInt8(name, 0, value);
}

status_t Message::FindInt32(const std::string &name, int32_t *value) const
{
    return FindInt32(name, 0, value);
}

status_t Message::FindInt64(const std::string &name, int64_t *value) const
{
    return FindInt64(name, 0, value);
}

status_t Message::FindBool(const std::string &name, bool *value) const
{
    return FindBool(name, 0, value);
}

status_t Message::FindFloat(const std::string &name, float *value) const
{
    return FindFloat(name, 0, value);
}

status_t Message::FindDouble(const std::string &name, double *value) const
{
    return FindDouble(name, 0, value);
}

status_t Message::FindRef(const std::string &name, entry_ref *value) const
{
    return FindRef(name, 0, value);
}

status_t Message::FindPointer(const std::string &name, void **value) const
{
    return FindPointer(name, 0, value);
}

status_t Message::ReplaceString(const std::string &name, int32_t index, const std::string &value)
{
    return ReplaceValue(name, B_STRING_TYPE, index, value);
}

status_t Message::ReplaceInt8(const std::string &name, int32_t index, int8_t value)
{
    return ReplaceValue(name, B_INT8_TYPE, index, value);
}

status_t Message::ReplaceInt32(const std::string &name, int32_t index, int32_t value)
{
    return ReplaceValue(name, B_INT32_TYPE, index, value);
}

status_t Message::ReplaceInt64(const std::string &name, int32_t index, int64_t value)
{
    return ReplaceValue(name, B_INT64_TYPE, index, value);
}

status_t Message::ReplaceBool(const std::string &name, int32_t index, bool value)
{
    return ReplaceValue(name, B_BOOL_TYPE, index, value);
}

status_t Message::ReplaceFloat(const std::string &name, int32_t index, float value)
{
    return ReplaceValue(name, B_FLOAT_TYPE, index, value);
}

status_t Message::ReplaceDouble(const std::string &name, int32_t index, double value)
{
    return ReplaceValue(name, B_DOUBLE_TYPE, index, value);
}

status_t Message::ReplaceRef(const std::string &name, int32_t index, const entry_ref &value)
{
    return ReplaceValue(name, B_REF_TYPE, index, value);
}

status_t Message::ReplacePointer(const std::string &name, int32_t index, const void *value)
{
    return ReplaceValue(name, B_POINTER_TYPE, index, value);
}

status_t Message::RemoveData(const std::string &name, int32_t index)
{
    const int fieldIndex = FieldIndex(name);
    if (fieldIndex < 0)
        return B_NAME_NOT_FOUND;
    Field &field = fFields[size_t(fieldIndex)];
    if (index < 0 || size_t(index) >= field.values.size())
        return B_BAD_INDEX;
    field.values.erase(field.values.begin() + index);
    if (field.values.empty())
        fFields.erase(fFields.begin() + fieldIndex);
    return B_OK;
}

status_t Message::RemoveName(const std::string &name)
{
    const int fieldIndex = FieldIndex(name);
    if (fieldIndex < 0)
        return B_NAME_NOT_FOUND;
    fFields.erase(fFields.begin() + fieldIndex);
    return B_OK;
}

void Message::MakeEmpty()
{
    fFields.clear();
}

status_t Message::GetInfo(const std::string &name, type_code *type, int32_t *count) const
{
    const int fieldIndex = FieldIndex(name);
    if (fieldIndex < 0)
        return B_NAME_NOT_FOUND;
    const Field &field = fFields[size_t(fieldIndex)];
    if (type)
        *type = field.type;
    if (count)
        *count = int32_t(field.values.size());
    return B_OK;
}

status_t Message::GetInfo(
    type_code type, int32_t index, std::string *name, type_code *foundType, int32_t *count) const
{
    if (index < 0)
        return B_BAD_INDEX;
    int32_t seen = 0;
    for (const Field &field : fFields) {
        if (type != B_ANY_TYPE && field.type != type)
            continue;
        if (seen++ != index)
            continue;
        if (name)
            *name = field.name;
        if (foundType)
            *foundType = field.type;
        if (count)
            *count = int32_t(field.values.size());
        return B_OK;
    }
    return seen == 0 ? B_BAD_TYPE : B_BAD_INDEX;
}

int32_t Message::CountNames(type_code type) const
{
    int32_t count = 0;
    for (const Field &field : fFields) {
        if (type == B_ANY_TYPE || field.type == type)
            count++;
    }
    return count;
}

} // namespace platform
