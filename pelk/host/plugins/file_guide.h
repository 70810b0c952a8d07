#pragma once

#include <string>

#include "pelk/base/types.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// Guide text that marks a string parameter as a file name. The scene reader makes such a value, if
/// it is relative, relative to the directory of the scene file, after it has replaced `${NAME}` by
/// the variables of the environment.
inline constexpr const char* kFileGuide = "file";

/// A plug-in that needs a file. Scenes ask it right after they are read, so that a missing file is
/// known before a render starts.
class FileUserInterface : public PluginInterface {
public:
    static constexpr InterfaceID<FileUserInterface> kInterfaceID{0x7E1C0004, "EXT_FILE_USER"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Returns false with a text that names the file and says what is wrong with it.
    virtual bool openFile(std::string& error) = 0;
};

}  // namespace Tarnkit
