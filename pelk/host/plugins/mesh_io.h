#pragma once

#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>
#include <string>

namespace Tarnkit {

/// Opens files for the import library: the mesh, and what it names further (material libraries,
/// buffers). Its own way would wait for the writer of a pipe. Plain files alone are opened; of what
/// is missing the library is told so, and goes on without it where it can. Reads only.
class MeshFiles final : public Assimp::IOSystem {
public:
    /// `refusal` gets words about the first name that is there and can't be read; it must outlive
    /// the object.
    explicit MeshFiles(std::string& refusal) : error(refusal) {}

    bool Exists(const char* file) const override;
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(const char* file, const char* mode) override;
    void Close(Assimp::IOStream* stream) override;

private:
    std::string& error;
};

}  // namespace Tarnkit
