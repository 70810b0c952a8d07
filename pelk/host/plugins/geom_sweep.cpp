#include "pelk/host/plugins/geom_sweep.h"

#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr int kMaxSegments = 4096;  // keeps a ball below 17 million vertices

constexpr ParamTable kSphereParams{
    floatParam("radius", &GeomSphere::Params::radius, 1.0f, "Radius of the ball"),
    intParam("segments", &GeomSphere::Params::segments, 128,
             "Triangles around the ball, 3 to 4096; half as many from pole to pole"),
};

constexpr ParamTable kQuadParams{
    floatParam("width", &GeomQuad::Params::width, 1.0f, "Side along X"),
    floatParam("height", &GeomQuad::Params::height, 1.0f, "Side along Y"),
};

constexpr ParamTable kBoxParams{
    colorParam("size", &GeomBox::Params::size, Color(1), "Sides along X, Y and Z"),
};

constexpr ParamTable kSweepParams{
    floatParam("width", &GeomSweep::Params::width, 10.0f, "Side along X"),
    floatParam("depth", &GeomSweep::Params::depth, 10.0f, "From the wall to the front edge"),
    floatParam("height", &GeomSweep::Params::height, 5.0f, "From the floor to the upper edge"),
    floatParam("radius", &GeomSweep::Params::radius, 2.0f, "Radius of the bend"),
    intParam("segments", &GeomSweep::Params::segments, 48, "Strips of the bend, 3 to 4096"),
};

bool checkSize(const char* name, float value, std::string& error) {
    if (value > 0.0f && std::isfinite(value))
        return true;
    error = std::string("\"") + name + "\" must be above 0";
    return false;
}

bool checkSegments(int segments, std::string& error) {
    if (segments >= 3 && segments <= kMaxSegments)
        return true;
    error = "\"segments\" must be 3 to " + std::to_string(kMaxSegments);
    return false;
}

void addVertex(Mesh& mesh, Vector position, Vector normal, UV uv) {
    mesh.positions.push_back(position);
    mesh.normals.push_back(normal);
    mesh.uvs.push_back(uv);
}

/// The two triangles of a quad whose corners run counter-clockwise.
void addQuad(Mesh& mesh, u32 a, u32 b, u32 c, u32 d) {
    mesh.triangles.push_back({a, b, c});
    mesh.triangles.push_back({a, c, d});
}

/// A rectangle of the given half edges about `centre`; its front is where `u` x `v` points.
void addRectangle(Mesh& mesh, Vector centre, Vector u, Vector v, int part) {
    const u32 first = static_cast<u32>(mesh.positions.size());
    const Vector normal = normalizeGuarded(cross(u, v));
    addVertex(mesh, centre - u - v, normal, {0, 0});
    addVertex(mesh, centre + u - v, normal, {1, 0});
    addVertex(mesh, centre + u + v, normal, {1, 1});
    addVertex(mesh, centre - u + v, normal, {0, 1});
    addQuad(mesh, first, first + 1, first + 2, first + 3);
    mesh.materialIDs.insert(mesh.materialIDs.end(), 2, part);
}

}  // namespace

// ---- ball

GeomSphere::GeomSphere(PelkPluginDesc* pluginDesc) : HostGeometry(pluginDesc) {
    kSphereParams.bind(paramList, params);
}

void GeomSphere::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    kSphereParams.addTo(list);
}

bool GeomSphere::buildShape(Mesh& mesh, std::string& error) {
    if (!checkSize("radius", params.radius, error) || !checkSegments(params.segments, error))
        return false;
    const u32 columns = static_cast<u32>(params.segments), rows = (columns + 1) / 2;
    // The column at u = 1 repeats the one at u = 0, and each pole has a vertex per column: texture
    // coordinates must not jump inside a triangle.
    for (u32 row = 0; row <= rows; ++row) {
        const double v = static_cast<double>(row) / rows;
        const double y = row == rows ? 1.0 : -std::cos(std::numbers::pi * v);
        const double ring = row == 0 || row == rows ? 0.0 : std::sin(std::numbers::pi * v);
        for (u32 column = 0; column <= columns; ++column) {
            const double u = static_cast<double>(column) / columns;
            const double angle = 2.0 * std::numbers::pi * (column % columns) / columns;
            const Vector normal{static_cast<float>(ring * std::sin(angle)), static_cast<float>(y),
                                static_cast<float>(ring * std::cos(angle))};
            addVertex(mesh, normal * params.radius, normal,
                      {static_cast<float>(u), static_cast<float>(v)});
        }
    }
    for (u32 row = 0; row < rows; ++row) {
        for (u32 column = 0; column < columns; ++column) {
            const u32 a = row * (columns + 1) + column, b = a + 1;
            const u32 c = b + columns + 1, d = c - 1;
            if (row > 0)
                mesh.triangles.push_back({a, b, c});
            if (row + 1 < rows)
                mesh.triangles.push_back({a, c, d});
        }
    }
    return true;
}

// ---- rectangle

GeomQuad::GeomQuad(PelkPluginDesc* pluginDesc) : HostGeometry(pluginDesc) {
    kQuadParams.bind(paramList, params);
}

void GeomQuad::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    kQuadParams.addTo(list);
}

bool GeomQuad::buildShape(Mesh& mesh, std::string& error) {
    if (!checkSize("width", params.width, error) || !checkSize("height", params.height, error))
        return false;
    addRectangle(mesh, {}, {params.width * 0.5f, 0, 0}, {0, params.height * 0.5f, 0}, 0);
    return true;
}

// ---- box

GeomBox::GeomBox(PelkPluginDesc* pluginDesc) : HostGeometry(pluginDesc) {
    kBoxParams.bind(paramList, params);
}

void GeomBox::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    kBoxParams.addTo(list);
}

bool GeomBox::buildShape(Mesh& mesh, std::string& error) {
    for (float side : {params.size.r, params.size.g, params.size.b}) {
        if (!checkSize("size", side, error))
            return false;
    }
    const Vector x{params.size.r * 0.5f, 0, 0}, y{0, params.size.g * 0.5f, 0},
        z{0, 0, params.size.b * 0.5f};
    addRectangle(mesh, x, -z, y, 0);
    addRectangle(mesh, -x, z, y, 1);
    addRectangle(mesh, y, x, -z, 2);
    addRectangle(mesh, -y, x, z, 3);
    addRectangle(mesh, z, x, y, 4);
    addRectangle(mesh, -z, -x, y, 5);
    // Edges are sharp, also where normals are asked to be smooth.
    mesh.normals.clear();
    return true;
}

// ---- backdrop

GeomSweep::GeomSweep(PelkPluginDesc* pluginDesc) : HostGeometry(pluginDesc) {
    kSweepParams.bind(paramList, params);
}

void GeomSweep::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    kSweepParams.addTo(list);
}

bool GeomSweep::buildShape(Mesh& mesh, std::string& error) {
    if (!checkSize("width", params.width, error) || !checkSize("radius", params.radius, error) ||
        !checkSegments(params.segments, error))
        return false;
    if (!(params.depth > params.radius) || !(params.height > params.radius) ||
        !std::isfinite(params.depth + params.height)) {
        error = "\"depth\" and \"height\" must be above \"radius\"";
        return false;
    }
    const float half = params.width * 0.5f, radius = params.radius;
    // One line across the sheet at (y, z), `along` from the front edge.
    const auto addLine = [&](float y, float z, Vector normal, float along) {
        const float v = along / params.width;
        addVertex(mesh, {-half, y, z}, normal, {0, v});
        addVertex(mesh, {half, y, z}, normal, {1, v});
    };
    addLine(0, params.depth, {0, 1, 0}, 0);
    const float flat = params.depth - radius;
    for (int i = 0; i <= params.segments; ++i) {
        const double angle = std::numbers::pi * 0.5 * i / params.segments;
        const float s = static_cast<float>(std::sin(angle));
        const float c = i == params.segments ? 0.0f : static_cast<float>(std::cos(angle));
        addLine(radius - radius * c, radius - radius * s, {0, c, s},
                flat + radius * static_cast<float>(angle));
    }
    const float bend = radius * std::numbers::pi_v<float> * 0.5f;
    addLine(params.height, 0, {0, 0, 1}, flat + bend + params.height - radius);
    const u32 lines = static_cast<u32>(params.segments) + 3;
    for (u32 i = 0; i + 1 < lines; ++i)
        addQuad(mesh, 2 * i, 2 * i + 1, 2 * i + 3, 2 * i + 2);
    return true;
}

}  // namespace Tarnkit
