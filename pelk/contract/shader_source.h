#pragma once

#include <cstddef>

#include "pelk/base/api.h"
#include "pelk/base/text_or.h"

namespace Tarnkit {

class PelkRenderer;

/// One run of describing a material tree, RTMtlInterface::getMaterialSource. Made by the host on
/// its stack, and passed through unchanged from the top material to the leaves.
struct OCLData {
    PelkRenderer* renderer = nullptr;  ///< not owned; null if the host describes without one
};

/// Text that grows at its end: the descriptor text of a material, see RTMtlInterface. Made by the
/// host, or by a material on its stack where it must know a sub-material's text before it can write
/// its own header. One thread at a time; outside of hits, as it takes memory.
///
/// Numbers are written as in the "C" locale whatever locale is set: readers of the text take a
/// comma for the end of a number.
///
/// append and printf throw an ExceptionMsg if there is no memory. The text then ends where it had
/// come to.
class PELK_API ShaderSource {
public:
    ShaderSource() = default;
    ~ShaderSource();
    ShaderSource(const ShaderSource&) = delete;
    ShaderSource& operator=(const ShaderSource&) = delete;

    /// Appends a text, which may be part of this one; null does nothing. No line feed is added.
    void append(const char* text);
    /// Appends what another source holds; it may be this one.
    void append(const ShaderSource& other);
    /// Appends as printf formats. Takes the conversions of printf but for `*` and %n, at which, as
    /// at a broken one, it stops. A null text for %s is written as empty, since a plug-in without a
    /// name has a null one.
    void printf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Tells the user by one warning if this text, that of the map of a bump material alone, has
    /// nothing to bump by: the map's texture doesn't describe itself, and whoever reads the text
    /// shows a smooth surface where the renderer shows a bumped one. The text stays as it is.
    ///
    /// `renderer`: whose log gets the warning; null, or one without a log, takes none. `name` and
    /// `type`: those of the material; a null name is written as empty. `flag`: 1 if the map is read
    /// as normals, 0 if as heights.
    void oclCheckBumpTextureSupport(PelkRenderer* renderer, const char* name, const char* type,
                                    int flag) const;

    /// The text so far, terminated; empty at first. Valid until the next append.
    const char* c_str() const { return textOrEmpty(text); }
    /// Its length in bytes, without the terminator.
    int length() const { return static_cast<int>(used); }

private:
    void append(const char* from, std::size_t size);

    char* text = nullptr;  ///< null until something was appended
    std::size_t used = 0, capacity = 0;
};

}  // namespace Tarnkit
