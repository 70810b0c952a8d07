#pragma once

#include <cstring>
#include <iterator>
#include <type_traits>

#include "pelk/base/exception_msg.h"
#include "pelk/base/grow_table.h"
#include "pelk/base/hash_little.h"
#include "pelk/base/sequence.h"

namespace Tarnkit {

/// How a HashTable treats its keys.
template <class K>
struct HashKey;

template <>
struct HashKey<u32> {
    static u32 hash(u32 key) { return hashlittle(&key, sizeof key, 0); }
    static bool equal(u32 a, u32 b) { return a == b; }
};

/// Names compare by their text. Null is a name like others, unequal to the empty one.
template <>
struct HashKey<const char*> {
    static u32 hash(const char* key) { return key ? hashlittle(key, std::strlen(key), 0) : 0; }
    static bool equal(const char* a, const char* b) {
        return a == b || (a && b && std::strcmp(a, b) == 0);
    }
};

/// A chained hash table that grows and shrinks along a list of primes. Keys are 32-bit numbers
/// or names; of a name only the pointer is kept, so its text must live as long as its entry.
/// Memory of removed entries is used again and goes back to the heap with the table. Memory
/// failure of an insertion is an ExceptionMsg; no entry is lost or half made then.
template <class K, class V>
class HashTable {
    static_assert(std::is_trivially_destructible_v<V>, "values are forgotten, not destroyed");

public:
    HashTable() { buckets.resize(kPrimes[0]); }

    /// The value of a key, null if the key isn't there. Valid until the key is removed.
    V* find(K key) { return const_cast<V*>(std::as_const(*this).find(key)); }
    const V* find(K key) const {
        const Node* node = findNode(key, HashKey<K>::hash(key));
        return node ? &node->value : nullptr;
    }

    /// Adds a key. If it is there already, nothing changes and the answer is false.
    bool insert(K key, const V& value) {
        const u32 hash = HashKey<K>::hash(key);
        if (findNode(key, hash))
            return false;
        if (loadPercent() >= 76 && prime + 1 < std::size(kPrimes))
            grow();
        Node* node = newNode();
        node->key = key;
        node->value = value;
        node->hash = hash;
        pushFront(buckets[bucketOf(hash)], node);
        ++count;
        return true;
    }

    /// False if the key isn't there. Can't fail.
    bool remove(K key) {
        const u32 hash = HashKey<K>::hash(key);
        Node** link = &buckets[bucketOf(hash)];
        while (*link && !isKey(**link, key, hash))
            link = &(*link)->next;
        if (!*link)
            return false;
        Node* node = *link;
        *link = node->next;
        pushFront(freeNodes, node);
        --count;
        if (loadPercent() < 20 && prime > 0)
            shrink();
        return true;
    }

    /// Removes all keys.
    void clear() {
        for (Node*& head : buckets)
            while (head)
                pushFront(freeNodes, std::exchange(head, head->next));
        // Shortened in place, for that can't fail.
        buckets.resize(kPrimes[0]);
        prime = 0;
        count = 0;
    }

    int size() const { return count; }
    int bucketCount() const { return buckets.size(); }

private:
    struct Node {
        K key;
        u32 hash;  // of the key: spares most comparisons of names, and all hashing in moveTo()
        V value;
        Node* next;
    };

    // Each about twice the one before.
    static constexpr int kPrimes[] = {
        13,       29,       59,        127,       257,       521,       1049,
        2099,     4201,     8419,      16843,     33703,     67409,     134837,
        269683,   539389,   1078787,   2157587,   4315183,   8630387,   17260781,
        34521589, 69043189, 138086407, 276172823, 552345671, 1104691373};

    static bool isKey(const Node& node, K key, u32 hash) {
        return node.hash == hash && HashKey<K>::equal(node.key, key);
    }

    static void pushFront(Node*& head, Node* node) {
        node->next = head;
        head = node;
    }

    u32 bucketOf(u32 hash) const { return hash % static_cast<u32>(buckets.size()); }

    int loadPercent() const { return static_cast<int>(count * 100LL / buckets.size()); }

    const Node* findNode(K key, u32 hash) const {
        const Node* node = buckets[bucketOf(hash)];
        while (node && !isKey(*node, key, hash))
            node = node->next;
        return node;
    }

    Node* newNode() {
        if (!freeNodes)
            return nodes.take();
        return std::exchange(freeNodes, freeNodes->next);
    }

    void grow() {
        GrowTable<Node*> fresh(kGrowthStep);
        fresh.resize(kPrimes[prime + 1]);
        moveTo(fresh, prime + 1);
    }

    /// Without the memory for the smaller table the present one does as well.
    void shrink() {
        GrowTable<Node*> fresh(kGrowthStep);
        try {
            fresh.resize(kPrimes[prime - 1]);
        } catch (const ExceptionMsg&) {
            return;
        }
        moveTo(fresh, prime - 1);
    }

    void moveTo(GrowTable<Node*>& fresh, std::size_t newPrime) {
        for (Node* node : buckets)
            while (node) {
                Node*& head = fresh[node->hash % static_cast<u32>(fresh.size())];
                pushFront(head, std::exchange(node, node->next));
            }
        buckets.swap(fresh);
        prime = newPrime;
    }

    static constexpr int kGrowthStep = 1000;
    GrowTable<Node*> buckets{kGrowthStep};
    std::size_t prime = 0;  // the place of the bucket count in kPrimes
    int count = 0;
    Node* freeNodes = nullptr;
    Sequence<Node> nodes{1000};
};

}  // namespace Tarnkit
