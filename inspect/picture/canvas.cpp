// SPDX-License-Identifier: MIT
#include "inspect/picture/canvas.h"

#include <png.h>

#include <cmath>

#include "sdk/object.h"

Canvas::Canvas(int width, int height)
    : width_(width),
      height_(height),
      pixels_(static_cast<zSize>(width) * static_cast<zSize>(height), Rgb{255, 255, 255}) {}

Rgb* Canvas::At(int x, int y) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return nullptr;
  return &pixels_[static_cast<zSize>(y) * static_cast<zSize>(width_) + static_cast<zSize>(x)];
}

void Canvas::Blend(int x, int y, Rgb color, z32f coverage) {
  Rgb* pixel = At(x, y);
  if (pixel == nullptr) return;
  const auto mix = [coverage](z8u below, z8u above) {
    return static_cast<z8u>(std::lround(static_cast<z32f>(below) * (1 - coverage) +
                                        static_cast<z32f>(above) * coverage));
  };
  *pixel = {mix(pixel->r, color.r), mix(pixel->g, color.g), mix(pixel->b, color.b)};
}

void Canvas::Fill(int x, int y, int width, int height, Rgb color) {
  for (int row = y; row < y + height; ++row) {
    for (int column = x; column < x + width; ++column) Set(column, row, color);
  }
}

void Canvas::Frame(int x, int y, int width, int height, Rgb color) {
  Fill(x, y, width, 1, color);
  Fill(x, y + height - 1, width, 1, color);
  Fill(x, y, 1, height, color);
  Fill(x + width - 1, y, 1, height, color);
}

zBytes Canvas::ToPng() const {
  static_assert(sizeof(Rgb) == PNG_IMAGE_PIXEL_SIZE(PNG_FORMAT_RGB));
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width_);
  image.height = static_cast<png_uint_32>(height_);
  image.format = PNG_FORMAT_RGB;
  image.flags = PNG_IMAGE_FLAG_FAST;  // five times as fast, and hardly larger
  zBytes bytes(PNG_IMAGE_PNG_SIZE_MAX(image));
  png_alloc_size_t size = bytes.size();
  if (png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels_.data(), 0, nullptr) == 0) {
    constexpr Orv::Operation kOperation{"inspection", "Canvas::ToPng"};
    kOperation.Fail(zERROR_MEMORY, "Failed to encode the picture: %s", image.message);
  }
  bytes.resize(size);
  return bytes;
}
