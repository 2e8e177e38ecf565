#include <vantu/CQorImage.h>
#include <vantu/CQorStorage.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace vantu {
namespace {

std::size_t BlockSize(unsigned int width, unsigned int height, PixelFormat format, unsigned char alignment) {
    const std::uint64_t rowBytes = (std::uint64_t{width} * BitsPerPixel(format) + 7) >> 3;
    const std::uint64_t stride = RowStride(width, format, alignment);
    // A row whose length wrapped in 32 bits would get less memory than its pixels need.
    if (stride < rowBytes) throw std::bad_alloc();
    const std::uint64_t size = stride * height;
    if (size > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) throw std::bad_alloc();
    return static_cast<std::size_t>(size);
}

/// The alignment by which rows lie `pitch` bytes apart: the least a with pitch = the next multiple of a from the bytes
/// of a row on. @return none if there is none up to 255, or if a row does not fit.
std::optional<unsigned char> AlignmentOf(unsigned int width, PixelFormat format, unsigned int pitch) {
    const std::uint64_t rowBytes = (std::uint64_t{width} * BitsPerPixel(format) + 7) >> 3;
    for (unsigned int a = 1; rowBytes <= pitch && a <= std::numeric_limits<unsigned char>::max(); ++a) {
        const auto alignment = static_cast<unsigned char>(a);
        if (RowStride(width, format, alignment) == pitch) return alignment;
    }
    return std::nullopt;
}

std::unique_ptr<ColorMap> GreyRamp(PixelFormat format) {
    const unsigned int bits = BitsPerPixel(format);
    if (bits == 0 || bits > 8) return nullptr;
    const unsigned int size = 1U << bits;
    auto ramp = std::make_unique<ColorMap>(size);
    for (unsigned int i = 0; i < size; ++i) {
        const auto grey = static_cast<unsigned char>(i * 255 / (size - 1));
        Color& entry = (*ramp)[i];
        entry.SetRed(grey);
        entry.SetGreen(grey);
        entry.SetBlue(grey);
    }
    return ramp;
}

}  // namespace

void CQorImage::FreeBlock::operator()(unsigned char* block) const {
    if (!foreign) std::free(block);
}

CQorImage::Block CQorImage::Allocate(std::size_t size) {
    // calloc leaves large blocks to the system's lazily zeroed pages.
    Block block(static_cast<unsigned char*>(std::calloc(size == 0 ? 1 : size, 1)));
    if (!block) throw std::bad_alloc();
    return block;
}

CQorImage::CQorImage(unsigned int width, unsigned int height, PixelFormat format, unsigned char alignment,
                     bool bottomUp)
    : CQorImage(width, height, format, alignment, bottomUp, Allocate(BlockSize(width, height, format, alignment))) {}

CQorImage::CQorImage(unsigned int width, unsigned int height, PixelFormat format, unsigned char alignment,
                     bool bottomUp, Block pixels)
    : width_(width),
      height_(height),
      format_(format),
      alignment_(alignment),
      bottomUp_(bottomUp),
      size_(BlockSize(width, height, format, alignment)),
      pixels_(std::move(pixels)),
      palette_(GreyRamp(format)) {}

std::shared_ptr<CQorImage> CQorImage::OnMemory(void* pixels, unsigned int width, unsigned int height,
                                               PixelFormat format, unsigned int pitch, bool bottomUp) {
    const auto alignment = AlignmentOf(width, format, pitch);
    if (!alignment) return nullptr;
    Block block(static_cast<unsigned char*>(pixels), FreeBlock{.foreign = true});
    return std::shared_ptr<CQorImage>(new CQorImage(width, height, format, *alignment, bottomUp, std::move(block)));
}

CQorImage::~CQorImage() = default;

void CQorImage::SetPalette(std::unique_ptr<ColorMap> palette) {
    palette_ = std::move(palette);
}

unsigned int CQorImage::GetWidth() const {
    return width_;
}
unsigned int CQorImage::GetHeight() const {
    return height_;
}
PixelFormat CQorImage::GetPixelFormat() const {
    return format_;
}
unsigned char CQorImage::GetAlignment() const {
    return alignment_;
}
const unsigned char* CQorImage::GetPixelData() const {
    return pixels_.get();
}
unsigned char* CQorImage::GetPixelData() {
    return pixels_.get();
}
const ColorMap* CQorImage::GetPalette() const {
    return palette_.get();
}
ColorMap* CQorImage::GetPalette() {
    return palette_.get();
}
bool CQorImage::IsBottomUp() const {
    return bottomUp_;
}

bool CQorImage::Store() const {
    if (!storage_ || !pixels_ || !Serialize(*storage_)) return false;
    stored_ = true;
    return true;
}

bool CQorImage::Erase() {
    return std::exchange(stored_, false);
}

bool CQorImage::Load() const {
    return pixels_ || (stored_ && storage_ && Deserialize(*storage_));
}

bool CQorImage::Unload() const {
    if (!stored_) return false;
    FreeMemory();
    return true;
}

bool CQorImage::NeedsManagement() const {
    return storage_ != nullptr;
}

bool CQorImage::SetStorage(std::shared_ptr<CQorStorage> storage, unsigned int /*key*/,
                           IQorMemoryManager* /*manager*/) const {
    if (pixels_.get_deleter().foreign) return false;
    storage_ = std::move(storage);
    stored_ = false;
    return storage_ != nullptr;
}

bool CQorImage::Serialize(CQorStorage& storage) const {
    if (!pixels_ || size_ > std::numeric_limits<unsigned int>::max() - 4) return false;
    const std::string block(reinterpret_cast<const char*>(pixels_.get()), size_);
    return storage.Write(block) == size_ + 4;
}

bool CQorImage::Deserialize(CQorStorage& storage) const {
    std::string block;
    if (storage.Read(block) != size_ + 4 || block.size() != size_) return false;
    pixels_ = Allocate(size_);
    block.copy(reinterpret_cast<char*>(pixels_.get()), size_);
    stored_ = false;  // a store is read front to back: what was taken is no longer there
    return true;
}

void CQorImage::FreeMemory() const {
    pixels_.reset();
}

unsigned int CQorImage::GetDataSizeImpl() const {
    return static_cast<unsigned int>(size_);
}

}  // namespace vantu
