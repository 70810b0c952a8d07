#pragma once

#include <string>

#include "pelk/base/types.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// Guide text of a string parameter that names a file. A scene's own files are looked for beside
/// it, so its reader puts the scene's directory in front.
inline constexpr const char* kFileGuide = "file";

/// Id of FileUserInterface.

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
