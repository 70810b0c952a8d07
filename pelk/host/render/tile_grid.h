#pragma once

#include <algorithm>

#include "pelk/host/picture/picture_rect.h"

namespace Tarnkit {

/// A rectangle cut into square tiles, counted row by row from the upper left; those at the right
/// and lower edge may be smaller.
class TileGrid {
public:
    TileGrid(const PictureRect& area_, int tileSize_)
        : area(area_),
          tileSize(tileSize_),
          columns(tilesIn(area.width())),
          rows(tilesIn(area.height())) {}

    const PictureRect& getArea() const { return area; }
    int getTileSize() const { return tileSize; }
    int getColumns() const { return columns; }
    int getRows() const { return rows; }
    int size() const { return columns * rows; }

    PictureRect at(int index) const {
        const int x0 = area.x0 + index % columns * tileSize;
        const int y0 = area.y0 + index / columns * tileSize;
        return {x0, y0, std::min(x0 + tileSize, area.x1), std::min(y0 + tileSize, area.y1)};
    }

    /// A rectangle that any tile fits into.
    PictureRect largest() const {
        return {0, 0, std::min(tileSize, area.width()), std::min(tileSize, area.height())};
    }

private:
    int tilesIn(int pixels) const { return (pixels + tileSize - 1) / tileSize; }

    PictureRect area;
    int tileSize;
    int columns, rows;
};

}  // namespace Tarnkit
