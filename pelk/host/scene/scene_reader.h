#pragma once

#include <memory>
#include <span>
#include <string>

#include "pelk/host/scene/scene.h"

namespace Tarnkit {

class HostSession;

/// Reads a scene file (docs/scene.schema.json describes its form), sets `overrides`
/// ("INSTANCE.PARAMETER=VALUE", or "settings.NAME=VALUE" where no instance is called settings;
/// VALUE being JSON or else a plain text), and checks all that can be checked before a render:
/// types, names, references, and that the files of the scene can be read. Files named in a scene
/// are looked for beside it. `file` may be an open stream ("-", /dev/stdin, /dev/fd/N), and has at
/// most 256 MiB. Returns null on failure; `error` then names the file, the place in it
/// (a line or a JSON pointer), and what was expected there, and `systemFault`, if given, tells
/// whether it was the system that could not read the scene file, so that the same may succeed later.
std::unique_ptr<Scene> readScene(HostSession& session, const std::string& file,
                                 std::span<const std::string> overrides, std::string& error,
                                 bool* systemFault = nullptr);

}  // namespace Tarnkit
