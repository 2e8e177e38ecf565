#include "CodecBench.h"

#include <benchmark/benchmark.h>
#include <vantu/CDIBLoader.h>
#include <vantu/CJPEGLoader.h>
#include <vantu/CPNGLoader.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// The C headers of libjpeg lean on <cstdio>.
#include <jpeglib.h>
#include <png.h>

namespace vantu::bench {
namespace {

using Bytes = std::vector<unsigned char>;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File Open(const std::string& path) {
    File file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw std::runtime_error("cannot open " + path);
    return file;
}

/// The rows of a picture, the lowest first, without gaps; red and blue as the library hands them out.
Bytes DecodePng(const std::string& path) {
    const File file = Open(path);
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_read_info(png, info);
    png_set_bgr(png);
    const std::size_t stride = png_get_rowbytes(png, info);
    const std::size_t height = png_get_image_height(png, info);
    Bytes pixels(stride * height);
    std::vector<unsigned char*> rows;
    for (std::size_t y = height; y > 0; --y) rows.push_back(pixels.data() + (y - 1) * stride);
    png_read_image(png, rows.data());
    png_destroy_read_struct(&png, &info, nullptr);
    return pixels;
}

Bytes DecodeJpeg(const std::string& path) {
    const File file = Open(path);
    jpeg_error_mgr errors;
    jpeg_decompress_struct jpeg;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    const std::size_t stride = std::size_t{jpeg.output_width} * 3;
    Bytes pixels(stride * jpeg.output_height);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = pixels.data() + (jpeg.output_height - 1 - jpeg.output_scanline) * stride;
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    return pixels;
}

/// Rows of a bitmap as they stand at the end of the file, padded to 4 bytes.
Bytes DecodeDib(const std::string& path) {
    const File file = Open(path);
    std::fseek(file.get(), 0, SEEK_END);
    Bytes content(static_cast<std::size_t>(std::ftell(file.get())));
    std::rewind(file.get());
    if (std::fread(content.data(), 1, content.size(), file.get()) != content.size()) content.clear();
    return content;
}

struct Codec {
    std::string file;
    std::function<std::shared_ptr<IQorImage>(const std::string& path)> load;
    Bytes (*decode)(const std::string& path);
    bool redFirst;  ///< in what `decode` returns
};

/// Whether the image is what the bare library decoded.
bool Same(const IQorImage& image, Bytes bare, bool redFirst) {
    if (redFirst) {
        for (std::size_t i = 0; i + 2 < bare.size(); i += 3) std::swap(bare[i], bare[i + 2]);
    }
    const std::size_t stride = RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    // A bare bitmap has its headers before the rows and padding in them, as the image has.
    const std::size_t rowBytes = bare.size() >= stride * image.GetHeight() ? stride : bare.size() / image.GetHeight();
    const unsigned char* rows = bare.data() + (bare.size() - rowBytes * image.GetHeight());
    for (std::size_t y = 0; y < image.GetHeight(); ++y) {
        if (!std::equal(rows + y * rowBytes, rows + (y + 1) * rowBytes, image.GetPixelData() + y * stride))
            return false;
    }
    return true;
}

void Load(benchmark::State& state, const Codec& codec, const std::string& path) {
    const auto image = codec.load(path);
    if (!image || !Same(*image, codec.decode(path), codec.redFirst)) {
        state.SkipWithError("does not read what the bare library reads");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(codec.load(path));
}

void Decode(benchmark::State& state, const Codec& codec, const std::string& path) {
    for (auto _ : state) benchmark::DoNotOptimize(codec.decode(path));
}

}  // namespace

void RegisterCodecBenchmarks() {
    const auto png = [](const std::string& path) { return CPNGLoader().Load(path, nullptr); };
    const auto jpeg = [](const std::string& path) { return CJPEGLoader().Load(path, nullptr); };
    const auto dib = [](const std::string& path) { return CDIBLoader().Load(path, nullptr); };
    for (const Codec& codec : {Codec{"chelsea.png", png, DecodePng, false}, Codec{"coffee.png", png, DecodePng, false},
                               Codec{"horse.png", png, DecodePng, false}, Codec{"rocket.jpg", jpeg, DecodeJpeg, true},
                               Codec{"vignette.bmp", dib, DecodeDib, false}}) {
        const std::string path = std::string(IMAGEOP_PICTURES) + '/' + codec.file;
        benchmark::RegisterBenchmark(("Load/" + codec.file).c_str(),
                                     [=](benchmark::State& s) { Load(s, codec, path); });
        benchmark::RegisterBenchmark(("BareLoad/" + codec.file).c_str(),
                                     [=](benchmark::State& s) { Decode(s, codec, path); });
    }
}

}  // namespace vantu::bench
