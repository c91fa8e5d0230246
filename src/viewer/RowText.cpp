#include "viewer/RowText.h"

#include <QStringDecoder>

namespace kestrin {

namespace {

bool IsContinuation(char byte)
{
    return (uint8_t(byte) & 0xC0) == 0x80;
}

// The UTF-8 text of `bytes`, or a null string when they are not UTF-8.
QString Utf8(std::string_view bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
    return decoder.hasError() ? QString() : (text.isNull() ? QString("") : text);
}

} // namespace

QString RowText::Decode(std::string_view bytes)
{
    // A piece of a long line may start with the tail of a character that
    // the piece before it shows whole.
    size_t skip = 0;
    while (skip < 3 && skip < bytes.size() && IsContinuation(bytes[skip]))
        skip++;
    QString text = Utf8(bytes.substr(skip));
    if (text.isNull())
        text = QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if (code < 0x20 && code != '\t')
            character = QChar(char16_t(0x2400 + code));
        else if (code == 0x7F)
            character = QChar(char16_t(0x2421));
        else if (code >= 0x80 && code < 0xA0)
            character = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

qsizetype RowText::CharactersBefore(std::string_view bytes, size_t prefix)
{
    prefix = std::min(prefix, bytes.size());
    size_t skip = 0;
    while (skip < 3 && skip < bytes.size() && IsContinuation(bytes[skip]))
        skip++;
    if (Utf8(bytes.substr(skip)).isNull())
        return qsizetype(prefix); // Latin-1: a character a byte
    return prefix <= skip ? 0 : Utf8(bytes.substr(skip, prefix - skip)).size();
}

} // namespace kestrin
