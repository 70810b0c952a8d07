#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/grow_table.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

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
    Bool,
    Int,
    Float,
    Color,
    Plugin,
    String,
    Texture,
    TextureFloat,
    TextureInt,
    Other
};

/// What is known of one parameter of a plug-in's kind. Texts are literals of the plug-in's library.
struct ParameterDesc {
    const char* name = nullptr;
    ParameterType type = ParameterType::Other;
    int typeNumber = 0;    ///< the number that addParam was given, else 0
    int count = -1;        ///< -1: a single value; 0: a list
    bool ofPairs = false;  ///< of a list of Plugin: items are lists of a number and a plug-in
    bool hasDefault = false;
    int intDefault = 0;                   ///< of Bool (0 or 1), Int and TextureInt
    AColor colorDefault{};                ///< of Color, Float (red), Texture and TextureFloat (red)
    const char* stringDefault = nullptr;  ///< of String
    u64 interfaceID = 0;                  ///< of Plugin: the face that a value must offer; 0 is any
    const char* description = nullptr;
    const char* guide = nullptr;  ///< hints for a user interface, opaque to libraries

    bool isList() const { return count >= 0; }
};

/// The parameters of one kind of plug-in, in the order in which they were added. Built once, by
/// the constructor of the descriptor. Names and texts are kept as pointers.
class PELK_API PelkParameterListDesc {
public:
    PelkParameterListDesc();
    ~PelkParameterListDesc();
    PelkParameterListDesc(const PelkParameterListDesc&) = delete;
    PelkParameterListDesc& operator=(const PelkParameterListDesc&) = delete;

    // `count`: -1 for a single value, 0 for a list. `description` and `guide` may be null.
    void addParamBool(const char* name, bool value, int count = -1,
                      const char* description = nullptr, const char* guide = nullptr);
    void addParamInt(const char* name, int value, int count = -1, const char* description = nullptr,
                     const char* guide = nullptr);
    void addParamFloat(const char* name, float value, int count = -1,
                       const char* description = nullptr, const char* guide = nullptr);
    void addParamColor(const char* name, Color value, int count = -1,
                       const char* description = nullptr, const char* guide = nullptr);
    void addParamPlugin(const char* name, u64 interfaceID, int count = -1,
                        const char* description = nullptr, const char* guide = nullptr);
    void addParamString(const char* name, const char* value, int count = -1,
                        const char* description = nullptr, const char* guide = nullptr);
    void addParamTexture(const char* name, int count = -1, const char* description = nullptr,
                         const char* guide = nullptr);
    void addParamTexture(const char* name, AColor value, int count = -1,
                         const char* description = nullptr, const char* guide = nullptr);
    void addParamTextureFloat(const char* name, int count = -1, const char* description = nullptr,
                              const char* guide = nullptr);
    void addParamTextureFloat(const char* name, float value, int count = -1,
                              const char* description = nullptr, const char* guide = nullptr);
    void addParamTextureInt(const char* name, int count = -1, const char* description = nullptr,
                            const char* guide = nullptr);
    void addParamTextureInt(const char* name, int value, int count,
                            const char* description = nullptr, const char* guide = nullptr);
    void addParam(const char* name, int typeNumber, int count = -1,
                  const char* description = nullptr, const char* guide = nullptr);
    /// The general form behind the others.
    void addParam(const ParameterDesc& parameter);

    /// Publishes all parameters of `desc` in `host`, in their order.
    void registerParameters(PelkPluginHost* host, PluginDesc* desc) const;

    int getNumParameters() const { return table.size(); }
    const ParameterDesc& getParameter(int index) const { return table[index]; }
    /// The parameter of that name, or null.
    const ParameterDesc* findParameter(const char* name) const;

private:
    GrowTable<ParameterDesc> table;
};

/// Integers of a list parameter. Valid until the parameter changes.
struct PelkIntList {
    int count = 0;
    const int* items = nullptr;
};

/// The bound value of a list of plug-ins. The array belongs to the parameter list; entries may be
/// null.
struct PelkPluginList {
    int count = 0;
    Plugin** items = nullptr;
};

/// The place at which parameter values are asked for. Hosts without spatial parameters ignore it.
struct TracePoint {
    Point position;
    Vector normal;
};

/// The value or the list of values that a host gives a parameter.
class PELK_API PelkPluginParameter : public PluginBase {
public:
    /// The number of values of a list at `time`; -1 for a single value.
    virtual int getCount(double time) = 0;
    /// Makes list item `index`, itself a list, the one that the other operations read. Returns a
    /// token for closeItem, or -1 if that item is no list; nothing is opened then.
    virtual int openItem(int index) = 0;
    virtual void closeItem(int token) = 0;
    virtual int getInt(int index, double time) = 0;
    virtual float getFloat(int index, double time) = 0;
    virtual AColor getColor(int index, double time) = 0;
    /// Valid until the parameter changes; null if there is no text.
    virtual const char* getString(int index, double time) = 0;
    /// The texture or plug-in behind a value; for a plain value the parameter itself, or null.
    virtual PluginBase* getObject(int index, double time) = 0;
    virtual PelkIntList getIntList(double time) = 0;

    const char* getName() const { return name; }

protected:
    /// `parameterName` is kept as a pointer and must outlive the parameter.
    explicit PelkPluginParameter(const char* parameterName) : name(parameterName) {}

private:
    const char* name;
};

/// The parameters of one instance: what the host has set, and the fields that follow it.
class PELK_API PelkParameterList {
public:
    /// `desc` may have no parameters; fields of unknown names then keep what they hold.
    explicit PelkParameterList(PelkPluginDesc* desc);
    ~PelkParameterList();
    PelkParameterList(const PelkParameterList&) = delete;
    PelkParameterList& operator=(const PelkParameterList&) = delete;

    // Each form binds a field to a parameter and writes the registered default into it, or null.
    // A bool parameter is bound to an int.
    void setParamCache(const char* name, int& field);
    void setParamCache(const char* name, float& field);
    void setParamCache(const char* name, Color& field);
    void setParamCache(const char* name, PluginBase*& field);
    void setParamCache(const char* name, TextureInterface*& field);
    void setParamCache(const char* name, TextureFloatInterface*& field);
    void setParamCache(const char* name, TextureIntInterface*& field);
    void setParamCache(const char* name, PelkPluginList& field);

    /// Rewrites every bound field from what is set, or from the default where nothing is.
    void cacheParams(double time, const TracePoint& tracePoint);

    /// Sets a parameter, which stays the caller's and must outlive the list or its replacement.
    void setParam(PelkPluginParameter* parameter);
    /// What was set under that name; null if nothing was.
    PelkPluginParameter* getParam(const char* name) const;

private:
    struct State;
    State* state;
};

}  // namespace Tarnkit
