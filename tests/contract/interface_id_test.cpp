#include "pelk/contract/interface_id.h"

#include <gtest/gtest.h>

#include "pelk/contract/plugin_base.h"

namespace {

using namespace Tarnkit;

class Lamp : public PluginInterface {
public:
    static constexpr InterfaceID<Lamp> kInterfaceID{0xB1, "EXT_LAMP"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    virtual int brightness() { return 1; }
};

class Clock : public PluginInterface {
public:
    static constexpr InterfaceID<Clock> kInterfaceID{0xB2, "EXT_CLOCK"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    virtual int hour() { return 12; }
};

/// Inherits the id of Lamp, under which objects offer lamps that can't be dimmed.
class DimmableLamp : public Lamp {};

/// Has taken over the line with the id, and the other class's name in it.
class MiscopiedClock : public PluginInterface {
public:
    static constexpr InterfaceID<Clock> kInterfaceID{0xB3, "EXT_MISCOPIED"};
};

template <class T>
concept CanBeFound = requires(PluginBase* object) {
    findInterface<T>(object);
};
template <class T>
concept CanBeOffered = requires {
    typename InterfaceList<T>;
};

static_assert(InterfaceClass<Lamp> && CanBeFound<Lamp> && CanBeOffered<Lamp>);
static_assert(!CanBeFound<DimmableLamp> && !CanBeOffered<DimmableLamp>);
static_assert(!InterfaceClass<DimmableLamp>, "an inherited id belongs to another class");
static_assert(!InterfaceClass<MiscopiedClock>, "an id names the class that it belongs to");
static_assert(!InterfaceClass<PluginInterface>, "the root has no id");

using Lamps = InterfaceList<Lamp>;
static_assert(Lamps::contains(0xB1) && !Lamps::contains(0xB2));
static_assert(Lamps::With<Clock>::contains(0xB2) && Lamps::With<Clock>::kNames[1].id == 0xB2);

/// Implements two interfaces, of which the second in its bases is the one that it offers.
class Desk : public PluginBase, public Clock, public Lamp {
public:
    PluginBase* getPlugin() override { return this; }
    PluginInterface* getInterface(u64 id) override {
        PluginInterface* const own = Lamps::find(*this, id);
        return own ? own : PluginBase::getInterface(id);
    }
    int brightness() override { return 7; }
};

TEST(InterfaceListTest, OnlyWhatIsListedIsFoundAndAsItsOwnPartOfTheObject) {
    Desk desk;
    Lamp* const lamp = findInterface<Lamp>(&desk);
    ASSERT_EQ(lamp, static_cast<Lamp*>(&desk));
    EXPECT_EQ(lamp->brightness(), 7);
    EXPECT_EQ(findInterface<Clock>(&desk), nullptr) << "implemented, but not offered";
    Clock* const clock = static_cast<Clock*>(Lamps::With<Clock>::find(desk, Clock::kInterfaceID));
    ASSERT_EQ(clock, static_cast<Clock*>(&desk));
    EXPECT_EQ(clock->hour(), 12);
}

}  // namespace
