#include "pelk/contract/interface_id.h"

#include "pelk/contract/plugin_base.h"

// Which classes are interfaces is decided when a plug-in is compiled, so the tests are static
// assertions.

namespace {

using namespace Tarnkit;

class Lamp : public PluginInterface {
public:
    static constexpr InterfaceID<Lamp> kInterfaceID{0xB1, "EXT_LAMP"};
    u64 getInterfaceID() const override { return kInterfaceID; }
};

class Clock : public PluginInterface {
public:
    static constexpr InterfaceID<Clock> kInterfaceID{0xB2, "EXT_CLOCK"};
    u64 getInterfaceID() const override { return kInterfaceID; }
};

/// Inherits the id of Lamp, under which objects offer lamps that can't be dimmed.
class DimmableLamp : public Lamp {};

/// Has taken over the line with the id, and the other class's name in it.
class MiscopiedClock : public PluginInterface {
public:
    static constexpr InterfaceID<Clock> kInterfaceID{0xB3, "EXT_MISCOPIED"};
};

static_assert(InterfaceClass<Lamp>);
static_assert(!InterfaceClass<DimmableLamp>, "an inherited id belongs to another class");
static_assert(!InterfaceClass<MiscopiedClock>, "an id names the class that it belongs to");
static_assert(!InterfaceClass<PluginInterface>, "the root has no id");

using Lamps = InterfaceList<Lamp>;
static_assert(Lamps::With<Clock>::contains(0xB2) && Lamps::With<Clock>::kNames[1].id == 0xB2);

}  // namespace
