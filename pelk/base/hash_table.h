#pragma once

#include <cstring>
#include <iterator>
#include <type_traits>

#include "pelk/base/exception_msg.h"
#include "pelk/base/grow_table.h"
#include "pelk/base/hash_little.h"
#include "pelk/base/sequence.h"

namespace Tarnkit {

/// How a HashTable treats its keys: `hash` and `equal`, where equal keys have equal hashes.
/// Specialised for the two kinds of key there are; a table with another doesn't compile until its
/// kind gets one.
template <class K>
struct HashKey;

/// Numbers, such as ids, by their four bytes in this machine's order.
template <>
struct HashKey<u32> {
    static u32 hash(u32 key) { return hashlittle(&key, sizeof key, 0); }
    static bool equal(u32 a, u32 b) { return a == b; }
};

/// Names compare by their text, byte by byte, and not by address: one that is looked up comes from
/// a scene file, one that stands in the table from a plug-in. Null is a name like others, unequal
/// to the empty one.
template <>
struct HashKey<const char*> {
    static u32 hash(const char* key) { return key ? hashlittle(key, std::strlen(key), 0) : 0; }
    static bool equal(const char* a, const char* b) {
        return a == b || (a && b && std::strcmp(a, b) == 0);
    }
};

/// A hash table with separate chaining, from 32-bit numbers or names to plain values: plug-in
/// descriptions by name, materials by the id of a shader set. Each key stands once.
///
/// The number of buckets is always a prime of a fixed list, so that keys with a common factor
/// spread all the same. It goes to the next prime when the table is 76 % full and to the one before
/// when it is below 20 % full. As primes of the list double, either leaves the table about 40 %
/// full, so keys that come and go at a bound don't resize it each time. Finding, inserting and
/// removing take constant time on average; a resize is linear in the entries but copies none of
/// them.
///
/// The table owns its nodes, in blocks: values never move, and a pointer to one is valid until its
/// key is removed, the table cleared or destroyed. Of a name only the pointer is kept, so its text
/// must live as long as its entry: names of plug-ins do, names built on the stack don't. Memory of
/// removed entries is used again and goes back to the heap with the table.
///
/// Chains, and not open addressing: entries of an open table move when it grows, and every pointer
/// into it would break.
///
/// With 13 buckets the eleventh key makes it 29 and 11 keys are 37 %; it goes back to 13 when fewer
/// than 6 keys are left. Chains are short at any size: at 76 % a key that is there is found
/// after 1.4 comparisons on average.
///
/// An example, plug-ins by name:
///
///     HashTable<const char*, PluginDesc*> byName;
///     byName.insert(desc->getName(), desc);  // false: the name is taken
///     if (PluginDesc** found = byName.find("MtlDiffuse"))
///         load(**found);
///
/// Any number of threads may call `find` while none changes the table, as materials do at hits of
/// tables that frameBegin has filled; everything else is for one thread at a time. Memory failure
/// of an insertion is an ExceptionMsg; no entry is lost or half made then.
template <class K, class V>
class HashTable {
    // A removed node waits for its next use with the old value still in it, so a value that owned
    // something would keep it for as long.
    static_assert(std::is_trivially_destructible_v<V>, "values are forgotten, not destroyed");

public:
    /// Allocates the first buckets, with the failure of an insertion.
    HashTable() { buckets.resize(kPrimes[0]); }

    /// The value of a key, null if the key isn't there. The table's own, and may be written through
    /// the first form. Allocates nothing, so it may run at hits.
    V* find(K key) { return const_cast<V*>(std::as_const(*this).find(key)); }
    const V* find(K key) const {
        const Node* node = findNode(key, HashKey<K>::hash(key));
        return node ? &node->value : nullptr;
    }

    /// Adds a key with a copy of the value. If the key is there already, nothing changes, the old
    /// value included, and the answer is false: of two plug-ins of one name the first stands.
    bool insert(K key, const V& value) {
        const u32 hash = HashKey<K>::hash(key);
        if (findNode(key, hash))
            return false;
        // Tested before the entry is added, so 13 buckets take ten entries and grow at the
        // eleventh. At the last prime chains just grow longer.
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

    /// Removes a key and returns true; false if it isn't there. Can't fail: if there is no memory
    /// for a smaller table, the present one stays. `key` may be the entry's own.
    bool remove(K key) {
        const u32 hash = HashKey<K>::hash(key);
        // The link that points to the node, be it the head or another node's: either is rewritten.
        Node** link = &buckets[bucketOf(hash)];
        while (*link && !isKey(**link, key, hash))
            link = &(*link)->next;
        if (!*link)
            return false;
        Node* node = *link;
        *link = node->next;
        pushFront(freeNodes, node);
        --count;
        // Behind the removal, unlike the growth of insert: the node is gone whether or not there is
        // memory for a smaller table.
        if (loadPercent() < 20 && prime > 0)
            shrink();
        return true;
    }

    /// Removes all keys and starts again with the fewest buckets. Keeps all memory for later
    /// entries and can't fail. Linear in the buckets.
    void clear() {
        for (Node*& head : buckets)
            while (head)
                pushFront(freeNodes, std::exchange(head, head->next));
        // Shortened in place, for that can't fail.
        buckets.resize(kPrimes[0]);
        prime = 0;
        count = 0;
    }

    /// Keys in the table.
    int size() const { return count; }
    /// Buckets at present, a prime; for tests of when the table is resized.
    int bucketCount() const { return buckets.size(); }

private:
    /// A chain's entry. Nodes are linked through themselves (intrusive), so that moving one between
    /// a chain and the free list needs no memory and removing can't fail.
    struct Node {
        K key;     // of a name the caller's pointer
        u32 hash;  // of the key: spares most comparisons of names, and all hashing in moveTo()
        V value;
        Node* next;  // in its chain, or on the free list; null for the last
    };

    /// The bucket counts, each about twice the one before. The next would be no int any more. Part
    /// of the table's behaviour: they decide when it is resized.
    static constexpr int kPrimes[] = {
        13,       29,       59,        127,       257,       521,       1049,
        2099,     4201,     8419,      16843,     33703,     67409,     134837,
        269683,   539389,   1078787,   2157587,   4315183,   8630387,   17260781,
        34521589, 69043189, 138086407, 276172823, 552345671, 1104691373};

    /// The hashes first: they nearly always differ where the keys do.
    static bool isKey(const Node& node, K key, u32 hash) {
        return node.hash == hash && HashKey<K>::equal(node.key, key);
    }

    /// New nodes stand first in their chain: what was just inserted is often looked up next.
    static void pushFront(Node*& head, Node* node) {
        node->next = head;
        head = node;
    }

    /// Unsigned, for a hash has all 32 bits and a negative remainder is no bucket.
    u32 bucketOf(u32 hash) const { return hash % static_cast<u32>(buckets.size()); }

    /// Entries in percent of the buckets, cut to an integer.
    int loadPercent() const { return static_cast<int>(count * 100LL / buckets.size()); }

    /// The node of a key, null if it isn't there. `hash` is that of the key: the caller has it, and
    /// for a name it costs as much as the comparisons.
    const Node* findNode(K key, u32 hash) const {
        const Node* node = buckets[bucketOf(hash)];
        while (node && !isKey(*node, key, hash))
            node = node->next;
        return node;
    }

    /// A removed node if there is one, else the next of the store; either holds old values.
    Node* newNode() {
        if (!freeNodes)
            return nodes.take();
        return std::exchange(freeNodes, freeNodes->next);
    }

    /// Allocates before it moves anything, so a failure leaves the table as it was.
    void grow() {
        GrowTable<Node*> fresh(kGrowthStep);
        fresh.resize(kPrimes[prime + 1]);
        moveTo(fresh, prime + 1);
    }

    /// Without the memory for the smaller table the present one does as well: removing mustn't
    /// fail.
    void shrink() {
        GrowTable<Node*> fresh(kGrowthStep);
        try {
            fresh.resize(kPrimes[prime - 1]);
        } catch (const ExceptionMsg&) {
            return;
        }
        moveTo(fresh, prime - 1);
    }

    /// Links every node into its bucket of `fresh`, which becomes the table's. Nothing here can
    /// fail, so a resize either isn't begun or is finished.
    void moveTo(GrowTable<Node*>& fresh, std::size_t newPrime) {
        for (Node* node : buckets)
            while (node) {
                Node*& head = fresh[node->hash % static_cast<u32>(fresh.size())];
                pushFront(head, std::exchange(node, node->next));
            }
        buckets.swap(fresh);
        prime = newPrime;
    }

    /// Room for buckets comes by the thousand, so the six smallest tables have the same memory and
    /// only larger ones ask for more.
    static constexpr int kGrowthStep = 1000;
    GrowTable<Node*> buckets{kGrowthStep};  // the heads of the chains, null for an empty one
    std::size_t prime = 0;                  // the place of the bucket count in kPrimes
    int count = 0;                          // keys: the nodes that stand in chains
    Node* freeNodes = nullptr;              // removed nodes, for the next insertions
    Sequence<Node> nodes{1000};             // owns all nodes, in chains or free
};

}  // namespace Tarnkit
