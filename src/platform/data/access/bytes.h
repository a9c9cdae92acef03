#pragma once

#include "platform/data/error.h"

#include <QByteArray>
#include <QtEndian>

#include <span>

namespace varo::access {

/// Throws the Error that says that the content of the file is not as it must be.
[[noreturn]] inline void throwDamaged(const char* what) {
    throw data::Error(QStringLiteral("the file is damaged: %1").arg(QLatin1StringView(what)));
}

/// A piece of a file in memory, whose numbers are read only where they are in it: everything that
/// is outside throws Error. Numbers are little-endian unless their name says otherwise.
class Bytes {
  public:
    Bytes() = default;
    Bytes(const char* bytes, qsizetype size) : bytes_(bytes), size_(size) {}
    explicit Bytes(const QByteArray& bytes) : Bytes(bytes.constData(), bytes.size()) {}

    const char* data() const noexcept { return bytes_; }
    qsizetype size() const noexcept { return size_; }
    bool isEmpty() const noexcept { return size_ == 0; }

    /// `length` bytes from `at` on, and all of them from there.
    Bytes part(qsizetype at, qsizetype length) const {
        require(at, length);
        return {bytes_ + at, length};
    }
    Bytes from(qsizetype at) const { return part(at, size_ - at); }

    quint8 byte(qsizetype at) const { return number<quint8>(at); }
    quint16 u16(qsizetype at) const { return number<quint16>(at); }
    quint32 u24(qsizetype at) const { return u16(at) | (quint32{byte(at + 2)} << 16); }
    quint32 u32(qsizetype at) const { return number<quint32>(at); }
    quint64 u64(qsizetype at) const { return number<quint64>(at); }

    quint32 bigU24(qsizetype at) const { return (quint32{bigU16(at)} << 8) | byte(at + 2); }
    quint32 bigU32(qsizetype at) const {
        require(at, 4);
        return qFromBigEndian<quint32>(bytes_ + at);
    }

    QByteArray toByteArray() const { return {bytes_, size_}; }

  private:
    quint16 bigU16(qsizetype at) const {
        require(at, 2);
        return qFromBigEndian<quint16>(bytes_ + at);
    }

    template <class Number>
    Number number(qsizetype at) const {
        require(at, sizeof(Number));
        return qFromLittleEndian<Number>(bytes_ + at);
    }

    void require(qsizetype at, qsizetype length) const {
        if (at < 0 || length < 0 || at > size_ || length > size_ - at) {
            throwDamaged("a field is outside of its page");
        }
    }

    const char* bytes_ = nullptr;
    qsizetype size_ = 0;
};

}  // namespace varo::access
