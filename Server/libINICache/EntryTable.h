// Hash table from the key of an entry to what is cached for it.
//
// A cached read has some 80 ns in all, half of which the lock takes; the division and the additional hop that a look-up
// in std::unordered_map costs would be another quarter. Not synchronised: the cache's lock guards it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "KeyText.h"

namespace wrb {

template <typename Value>
class EntryTable {
  public:
    // Null when there is none. Valid until the entry is erased.
    const Value* Find(const EntryKey& key) const noexcept {
        const Node* node = m_buckets.empty() ? nullptr : Bucket(key.Hash()).get();
        while (node != nullptr && !(node->hash == key.Hash() && node->key == key.View())) {
            node = node->next.get();
        }
        return node != nullptr ? &node->value : nullptr;
    }

    // The entry that is there, or a new one.
    Value& FindOrAdd(const EntryKey& key) {
        if (const Value* found = Find(key)) {
            return const_cast<Value&>(*found);
        }
        if (m_count == m_buckets.size()) {
            Grow();
        }
        NodePtr& bucket = Bucket(key.Hash());
        auto node = std::make_unique<Node>();
        node->hash = key.Hash();
        node->key = key.View();
        node->next = std::move(bucket);
        bucket = std::move(node);
        ++m_count;
        return bucket->value;
    }

    void Erase(const EntryKey& key) noexcept {
        if (m_buckets.empty()) {
            return;
        }
        for (NodePtr* link = &Bucket(key.Hash()); *link != nullptr; link = &(*link)->next) {
            if ((*link)->hash == key.Hash() && (*link)->key == key.View()) {
                *link = std::move((*link)->next);
                --m_count;
                return;
            }
        }
    }

    void Clear() noexcept {
        m_buckets.clear();
        m_count = 0;
    }

  private:
    static constexpr std::size_t kFirstBuckets = 64;  // a power of two, and so is every later size

    struct Node;
    using NodePtr = std::unique_ptr<Node>;
    struct Node {
        NodePtr next;
        uint64_t hash = 0;
        std::string key;
        Value value{};
    };

    NodePtr& Bucket(uint64_t hash) noexcept { return m_buckets[hash & (m_buckets.size() - 1)]; }
    const NodePtr& Bucket(uint64_t hash) const noexcept { return m_buckets[hash & (m_buckets.size() - 1)]; }

    void Grow() {
        std::vector<NodePtr> old(m_buckets.empty() ? kFirstBuckets : m_buckets.size() * 2);
        old.swap(m_buckets);
        for (NodePtr& chain : old) {
            while (chain != nullptr) {
                NodePtr node = std::exchange(chain, std::move(chain->next));
                NodePtr& bucket = Bucket(node->hash);
                node->next = std::move(bucket);
                bucket = std::move(node);
            }
        }
    }

    std::vector<NodePtr> m_buckets;
    std::size_t m_count = 0;
};

}  // namespace wrb
