#pragma once

#include "pelk/contract/material.h"

/// Catches what a base material writes of its reflections and refractions, and drops all other
/// channels. Small enough to stand on the stack of a hit.
class MatteFragment : public Fragment {
public:
    Color reflection;        ///< channel kAliasReflection
    Color refraction;        ///< channel kAliasRefraction
    Color reflectionFilter;  ///< channel kAliasReflectionFilter

    int getTag() override { return tag; }
    void setTag(int value) override { tag = value; }
    /// `other` may be of any kind; channels that it doesn't have add nothing.
    void addFragment(Fragment* other, const Color& weights, int mode) override;
    void multiply(const Color& weights, int flag) override;
    void setColor(const Color&) override {}
    void getChannel(int, void*) override {}
    void setChannel(int, const void*) override {}
    void* getChannelPtr(int) override { return nullptr; }
    void getAlias(int alias, void* out) override;
    void addAlias(int alias, const void* value) override;
    void* getAliasPtr(int alias) override { return find(alias); }
    int clear(int mode) override;
    void applyColorMapper(ColorMapper*, int) override {}
    AColor* getSampleColor(AColor* out) override;

private:
    Color* find(int alias);

    int tag = 0;
};

/// Hands out MatteFragments to one thread, without a lock.
class MatteFragmentManager : public FragmentManager {
public:
    /// An empty fragment. Memory failure is an ExceptionMsg.
    Fragment* newFragment() override;
    /// Takes back a fragment that this manager gave.
    void deleteFragment(Fragment* fragment) override;

private:
    PoolEntry<MatteFragment> entry;
};

/// Fills whole cache lines, so that the managers of two threads share none.
class alignas(64) MatteFragmentManagerAligned final : public MatteFragmentManager {};

/// The fragment managers of one material, one for each render thread.
class MatteFragmentManagers {
public:
    MatteFragmentManagers() = default;
    MatteFragmentManagers(const MatteFragmentManagers&) = delete;
    MatteFragmentManagers& operator=(const MatteFragmentManagers&) = delete;
    ~MatteFragmentManagers() { destroy(); }

    /// Ends what there is and makes `n` fresh managers. Memory failure is an ExceptionMsg that
    /// leaves none.
    void resize(int n);
    void destroy();
    /// The manager of a render thread; null outside their lifetime.
    FragmentManager* manager(int threadIndex) {
        return managers ? managers + threadIndex : nullptr;
    }

private:
    MatteFragmentManagerAligned* managers = nullptr;
    int numManagers = 0;
};
