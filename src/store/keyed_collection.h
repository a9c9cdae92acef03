#pragma once

#include <QHash>
#include <QString>

#include <memory>
#include <stdexcept>
#include <vector>

namespace varo {

/// A position or key that a collection does not hold, or a key that it holds already.
class CollectionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Records in insertion order, addressed by 1-based position or by text key. Owns its records; a
/// reference to one stays valid until that record is removed.
template <class Record>
class KeyedCollection {
  public:
    KeyedCollection() = default;
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;

    int Count() const { return static_cast<int>(records_.size()); }
    bool contains(const QString& key) const { return byKey_.contains(key); }

    /// The record at a position or with a key; throws CollectionError when there is none.
    Record& Item(int position) { return *records_[checked(position)]; }
    const Record& Item(int position) const { return *records_[checked(position)]; }
    Record& Item(const QString& key) { return *found(key); }
    const Record& Item(const QString& key) const { return *found(key); }

    /// Enumeration in insertion order.
    class Iterator {
      public:
        using Base = typename std::vector<std::unique_ptr<Record>>::const_iterator;
        explicit Iterator(Base base) : base_(base) {}
        const Record& operator*() const { return **base_; }
        Iterator& operator++() {
            ++base_;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

      private:
        Base base_;
    };
    Iterator begin() const { return Iterator(records_.begin()); }
    Iterator end() const { return Iterator(records_.end()); }

  protected:
    ~KeyedCollection() = default;

    /// Appends `record` under `key`; throws CollectionError, adding nothing, when the key is taken.
    Record& append(const QString& key, Record record) {
        if (byKey_.contains(key)) {
            throw CollectionError("the key is already in the collection");
        }
        records_.push_back(std::make_unique<Record>(std::move(record)));
        byKey_.insert(key, records_.back().get());
        return *records_.back();
    }

    void removeAt(int position, const QString& key) {
        const auto index = checked(position);
        byKey_.remove(key);
        records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    /// Position of the record with this key; the last records are looked at first, so that emptying
    /// a collection from its end takes linear time.
    int positionOf(const QString& key) const {
        const Record* record = found(key);
        for (int position = Count(); position > 0; --position) {
            if (records_[static_cast<std::size_t>(position) - 1].get() == record) {
                return position;
            }
        }
        throw CollectionError("no such key in the collection");
    }

  private:
    std::size_t checked(int position) const {
        if (position < 1 || position > Count()) {
            throw CollectionError("no such position in the collection");
        }
        return static_cast<std::size_t>(position) - 1;
    }

    Record* found(const QString& key) const {
        const auto it = byKey_.constFind(key);
        if (it == byKey_.constEnd()) {
            throw CollectionError("no such key in the collection");
        }
        return *it;
    }

    std::vector<std::unique_ptr<Record>> records_;
    QHash<QString, Record*> byKey_;
};

}  // namespace varo
