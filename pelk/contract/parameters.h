#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/grow_table.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

// How a plug-in gets its settings, in three steps.
//   1. The descriptor lists the parameters of the kind: name, type, default, texts
//      (ParameterDesc, PelkParameterListDesc). Hosts read the list for their user interface, for
//      reading scenes, and for documentation.
//   2. The instance binds fields of its own to them by name, in its constructor
//      (PelkParameterList).
//   3. The host sets values on the instance (PelkPluginParameter), and the instance's frameBegin
//      rewrites the bound fields from them. At hits there are plain fields to read.
// A plug-in does the first two from one table, see param_table.h.

namespace Tarnkit {

class Plugin;
class PluginDesc;
class PelkPluginDesc;
class PelkPluginHost;
class PelkPluginParameter;
class TextureInterface;
class TextureFloatInterface;
class TextureIntInterface;

/// The kinds of parameters. `Other` is told further by ParameterDesc::typeNumber.
enum class ParameterType {
    Bool,          ///< bound to an int of 0 or 1
    Int,           ///< bound to an int
    Float,         ///< bound to a float
    Color,         ///< three floats, linear; bound to a Color
    Plugin,        ///< another instance of the scene; bound to a PluginBase pointer
    String,        ///< read by name, as it can't be bound
    Texture,       ///< a colour or a texture; bound to a TextureInterface pointer
    TextureFloat,  ///< a number or a texture; bound to a TextureFloatInterface pointer
    TextureInt,    ///< an integer or a texture; bound to a TextureIntInterface pointer
    Other          ///< what the types above don't tell; read by name
};

/// A value of ParameterDesc::typeNumber: a list of floats, each of which a float texture may stand
/// for, as the positions of a ramp. Read by name: getFloat gives the number of an item, getObject
/// its texture. Registered with the count -1, a list all the same.
constexpr int kTexturedFloatsType = 12;

/// What is known of one parameter of a plug-in's kind. Texts are literals of the plug-in's library,
/// kept as pointers; they are valid as long as the library is loaded.
///
/// `guide` is for a host's user interface; plug-ins never read it. It is a list of entries
/// "key=(value)" with commas between them; values hold no parentheses:
///     displayName=(text)           the label, in place of the parameter's name
///     startTab=(text)              from here on the parameters stand on a tab of this title
///     startRollout=(text)          from here on they stand in a group of this title; () has none
///     minValue=(n), maxValue=(n)   range that a user interface offers. Values from a scene may lie
///                                  outside, so the plug-in clamps what it must
///     enum=(0:text;1:text)         the values of an Int and what to show for each
///     enable=(::name=value)        to be changed only while the parameter `name` has that value
///     attributes=(objectSet)       the list names objects of the scene
/// "minValue(0)" without the equals sign occurs too. A reader passes over what it doesn't know:
/// keys are added as user interfaces need them. `pelk` shows the text, holds a scene to the ranges
/// of its own plug-ins, and takes a String whose whole guide is "file" for a file name.
struct ParameterDesc {
    const char* name = nullptr;  ///< lower case with underscores; unlike all others of the kind
    ParameterType type = ParameterType::Other;
    int typeNumber = 0;       ///< the number that addParam was given (kTexturedFloatsType), else 0
    int count = -1;           ///< -1: a single value; 0: a list of any length
    bool ofPairs = false;     ///< of a list of Plugin: items are lists of a number and a plug-in
    bool hasDefault = false;  ///< false: the fields below say nothing
    int intDefault = 0;       ///< of Bool (0 or 1), Int and TextureInt
    AColor colorDefault{};    ///< of Color, Float (red), Texture and TextureFloat (red)
    const char* stringDefault = nullptr;  ///< of String
    u64 interfaceID = 0;  ///< of Plugin: the interface that a value must offer; 0 is any. The host
                          ///< checks it, so a plug-in of another kind rarely arrives, but it may
    const char* description = nullptr;  ///< a sentence for users; null is none
    const char* guide = nullptr;        ///< hints for a user interface as above; null is none

    /// Whether a value is a list: by the count, or by a type that is one whatever its count.
    bool isList() const { return count >= 0 || isTexturedFloats(); }
    bool isTexturedFloats() const {
        return type == ParameterType::Other && typeNumber == kTexturedFloatsType;
    }
};

/// The parameters of one kind of plug-in, in the order in which they were added, which is the order
/// in which hosts show them. A member of the descriptor, filled once by its constructor and never
/// changed after that; then all threads may read it. Names are added once: findParameter knows the
/// first of a name only.
class PELK_API PelkParameterListDesc {
public:
    PelkParameterListDesc();
    ~PelkParameterListDesc();
    PelkParameterListDesc(const PelkParameterListDesc&) = delete;
    PelkParameterListDesc& operator=(const PelkParameterListDesc&) = delete;

    // One operation per type. `value` is the default, of a list that of its items; the forms
    // without one register none. `count`: -1 for a single value, 0 for a list. `name`,
    // `description` and `guide` are kept as pointers, and the last two may be null. Each throws an
    // ExceptionMsg if there is no memory, and adds nothing then.

    void addParamBool(const char* name, bool value, int count = -1,
                      const char* description = nullptr, const char* guide = nullptr);
    void addParamInt(const char* name, int value, int count = -1, const char* description = nullptr,
                     const char* guide = nullptr);
    void addParamFloat(const char* name, float value, int count = -1,
                       const char* description = nullptr, const char* guide = nullptr);
    void addParamColor(const char* name, Color value, int count = -1,
                       const char* description = nullptr, const char* guide = nullptr);
    /// `interfaceID`: what a value must offer, 0 for any plug-in.
    void addParamPlugin(const char* name, u64 interfaceID, int count = -1,
                        const char* description = nullptr, const char* guide = nullptr);
    /// `value` is kept as a pointer; null registers no default.
    void addParamString(const char* name, const char* value, int count = -1,
                        const char* description = nullptr, const char* guide = nullptr);
    /// The default of a texture parameter is told to hosts alone, which may set it as a value: the
    /// bound pointer is null until they do.
    void addParamTexture(const char* name, int count = -1, const char* description = nullptr,
                         const char* guide = nullptr);
    void addParamTexture(const char* name, AColor value, int count = -1,
                         const char* description = nullptr, const char* guide = nullptr);
    void addParamTextureFloat(const char* name, int count = -1, const char* description = nullptr,
                              const char* guide = nullptr);
    /// Needs a float: addParamTextureFloat("x", 0) is the form above and registers a list.
    void addParamTextureFloat(const char* name, float value, int count = -1,
                              const char* description = nullptr, const char* guide = nullptr);
    void addParamTextureInt(const char* name, int count = -1, const char* description = nullptr,
                            const char* guide = nullptr);
    /// `count` must be given here, or a default could not be told from a count.
    void addParamTextureInt(const char* name, int value, int count,
                            const char* description = nullptr, const char* guide = nullptr);
    /// A parameter of the type `Other`; `typeNumber` as in ParameterDesc.
    void addParam(const char* name, int typeNumber, int count = -1,
                  const char* description = nullptr, const char* guide = nullptr);
    /// The general form behind the others, which parameter tables use. Copies the record.
    void addParam(const ParameterDesc& parameter);

    /// Publishes all parameters of `desc` in `host`, in their order: one addParameter each, with a
    /// record that lives as long as this list. A null host does nothing.
    void registerParameters(PelkPluginHost* host, PluginDesc* desc) const;

    int getNumParameters() const { return table.size(); }
    /// `index` from 0, below the number of parameters.
    const ParameterDesc& getParameter(int index) const { return table[index]; }
    /// The parameter of that name, or null. Compares one by one; not for hits.
    const ParameterDesc* findParameter(const char* name) const;

private:
    GrowTable<ParameterDesc> table;
};

/// Integers of a list parameter. `items` belongs to the parameter and is valid until that changes;
/// null when `count` is 0.
struct PelkIntList {
    int count = 0;
    const int* items = nullptr;
};

/// The bound value of a list of plug-ins. The array belongs to the parameter list of the instance
/// and is valid until the next cacheParams; the plug-ins belong to the scene. Entries are null
/// where the host has set none, or an object that isn't a Plugin.
struct PelkPluginList {
    int count = 0;
    Plugin** items = nullptr;
};

/// The place at which parameter values are asked for, for hosts whose values differ from place to
/// place. This library has no such values and ignores it; frameBegin passes one of zeros.
struct TracePoint {
    Point position;
    Vector normal;
};

/// The value or the list of values that a host gives a parameter. Made and owned by the host, which
/// writes its own classes or uses those of plugin_parameters.h.
///
/// All operations answer for any `index` and never fail: 0, black or null stand for what can't be
/// had. A single value has the index 0. `time` is in the scene's unit, that of
/// FrameData::frameTime; values without keyframes ignore it. Plug-ins call them in renderBegin and
/// frameBegin, on one thread. The three getters of numbers and colours are also called at hits,
/// from all render threads, where a plain value stands for a texture: they take no lock and no
/// memory.
///
/// A list whose items are lists, such as pairs of an id and a material, is read item by item:
///
///     for (int i = 0; i < parameter.getCount(time); ++i) {
///         const int token = parameter.openItem(i);
///         if (token < 0)
///             continue;  // no list; nothing to close
///         const int id = parameter.getInt(0, time);
///         PluginBase* const plugin = parameter.getObject(1, time);
///         parameter.closeItem(token);
///     }
class PELK_API PelkPluginParameter : public PluginBase {
public:
    /// The number of values of a list at `time`, or of the item that is open; -1 for a single
    /// value.
    virtual int getCount(double time) = 0;
    /// Makes list item `index`, itself a list, the one that the other operations read. Returns a
    /// token for closeItem, or -1 if that item is no list; nothing is opened then. It changes the
    /// parameter, so items are read on one thread, outside of hits.
    virtual int openItem(int index) = 0;
    /// Ends what openItem began; `token` is what that answered, not -1. Due on every way out, since
    /// until then the parameter answers for the item alone.
    virtual void closeItem(int token) = 0;
    /// A bool is 0 or 1.
    virtual int getInt(int index, double time) = 0;
    virtual float getFloat(int index, double time) = 0;
    /// Linear. A colour without an alpha of its own has 1.
    virtual AColor getColor(int index, double time) = 0;
    /// Valid until the parameter changes; null if there is no text.
    virtual const char* getString(int index, double time) = 0;
    /// The texture or plug-in behind a value; it belongs to the scene. For a plain value the
    /// parameter itself, if it offers EXT_TEXTURE and the like to stand for a texture; else null.
    virtual PluginBase* getObject(int index, double time) = 0;
    /// All integers of a list at once; none if the values aren't integers.
    virtual PelkIntList getIntList(double time) = 0;

    /// The name of the parameter that this is a value for.
    const char* getName() const { return name; }

protected:
    /// `parameterName` is kept as a pointer and must outlive the parameter; it must not be null.
    explicit PelkPluginParameter(const char* parameterName) : name(parameterName) {}

private:
    const char* name;
};

/// One field of an instance, as a host that checks plug-ins sees it.
struct BoundField {
    const char* name;           ///< that it is bound to; null if the plug-in gave none
    const ParameterDesc* desc;  ///< null if the plug-in's kind has no parameter of that name
    bool isOfType;              ///< the field is of the parameter's type, so nothing is converted
};

/// The parameters of one instance: what the host has set, and the fields that follow it. A member
/// of every plug-in (PelkPluginInterface::paramList). For the thread that builds the scene and
/// begins frames; at hits the bound fields are read and this isn't touched.
///
/// What throws, throws an ExceptionMsg for lack of memory.
class PELK_API PelkParameterList {
public:
    /// Takes the defaults from the descriptor, which must outlive this list. `desc` may be null or
    /// have no parameters; fields of unknown names then keep what they hold.
    explicit PelkParameterList(PelkPluginDesc* desc);
    ~PelkParameterList();
    PelkParameterList(const PelkParameterList&) = delete;
    PelkParameterList& operator=(const PelkParameterList&) = delete;

    // Each form binds a field to a parameter and writes the registered default into it at once:
    // null into pointers, an empty list into a PelkPluginList. So an operation that comes before
    // the first frame finds something harmless. A field of another type than the parameter gets the
    // value converted, or null where the object doesn't offer the interface. The field must outlive
    // the list or at least its last cacheParams; `name` is kept as a pointer. May throw.

    void setParamCache(const char* name, int& field);
    void setParamCache(const char* name, float& field);
    void setParamCache(const char* name, Color& field);
    /// Gets whatever object is set; its interfaces are looked up in frameBegin.
    void setParamCache(const char* name, PluginBase*& field);
    /// The three forms for textures are null until a texture or a plain value is set, whatever the
    /// default: a plug-in then uses its own value and saves the call at each hit.
    void setParamCache(const char* name, TextureInterface*& field);
    void setParamCache(const char* name, TextureFloatInterface*& field);
    void setParamCache(const char* name, TextureIntInterface*& field);
    void setParamCache(const char* name, PelkPluginList& field);

    /// Rewrites every bound field from what is set, or from the default where nothing is, also
    /// those whose parameter didn't change: a plug-in may have overwritten its fields. Called by
    /// frameBegin at the frame's time; a plug-in that needs values in renderBegin calls it there
    /// itself, with the time 0. May throw, when a PelkPluginList grows.
    void cacheParams(double time, const TracePoint& tracePoint);

    /// Sets a parameter, which stays the caller's and must outlive the list or its replacement by
    /// one of the same name. Fields follow at the next cacheParams. Null does nothing. May throw.
    void setParam(PelkPluginParameter* parameter);
    /// What was set under that name, for parameters that have no field. Null if nothing was:
    /// defaults have no object, so "never set" and "set to an empty list" can be told apart.
    PelkPluginParameter* getParam(const char* name) const;

    // For hosts that check plug-ins.

    /// The parameters of the plug-in's kind; null if it has none.
    const PelkParameterListDesc* getKindParameters() const;
    /// `index` from 0, in the order in which the fields were bound, below their number.
    BoundField getBoundField(int index) const;
    int getNumBoundFields() const;
    /// How often cacheParams has been called.
    u64 getNumRefreshes() const;

private:
    struct State;
    State* state;
};

}  // namespace Tarnkit
