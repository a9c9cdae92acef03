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

/// Records in insertion order, addressed by 1-based position or by the text in their field `Key`,
/// which is unique in the collection and constant, since records are found by it. Owns its records;
/// a reference to one stays valid until that record is removed.
template <class Record, const QString Record::*Key>
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

    /// Removes the record at a position or with a key; throws CollectionError when there is none.
    void Remove(int position) { removeAt(checked(position)); }
    void Remove(const QString& key) {
        const std::size_t index = indexOf(found(key));
        onRemoveByKey(*records_[index]);
        removeAt(index);
    }

    /// Removes every record by its key, the last one first.
    void Clear() {
        while (!records_.empty()) {
            Remove((*records_.back()).*Key);
        }
    }

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

    /// Appends `record`; throws CollectionError, adding nothing, when its key is taken.
    Record& append(Record record) {
        const QString& key = record.*Key;
        if (byKey_.contains(key)) {
            throw CollectionError("the key is already in the collection");
        }
        records_.push_back(std::make_unique<Record>(std::move(record)));
        Record& added = *records_.back();
        byKey_.insert(added.*Key, &added);
        return added;
    }

    /// Called with each record before it leaves the collection.
    virtual void onRemove(Record& /*record*/) {}

    /// Called before onRemove() when the record is removed by its key or by Clear().
    virtual void onRemoveByKey(Record& /*record*/) {}

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

    /// The last records are looked at first, so that emptying a collection from its end takes
    /// linear time.
    std::size_t indexOf(const Record* record) const {
        std::size_t index = records_.size() - 1;
        while (records_[index].get() != record) {
            --index;
        }
        return index;
    }

    void removeAt(std::size_t index) {
        Record& record = *records_[index];
        onRemove(record);
        byKey_.remove(record.*Key);
        records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    std::vector<std::unique_ptr<Record>> records_;
    QHash<QString, Record*> byKey_;
};

}  // namespace varo
