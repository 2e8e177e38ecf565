#include "pixel/DynamicAccessor.h"

#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "pixel/Formats.h"

namespace vantu {
namespace {

void SetNoColor(const DynamicAccessor&, unsigned int, unsigned int, const Color&) {}
void SetNoValue(const DynamicAccessor&, unsigned int, unsigned int, unsigned int) {}

/// The record that owns a copy of `view`, each operation bound to it where it has one.
template <bool Writable, typename View>
std::unique_ptr<DynamicAccessor> Bind(const View& view) {
    std::unique_ptr<View> owned(new (std::nothrow) View(view));
    std::unique_ptr<DynamicAccessor> record(new (std::nothrow) DynamicAccessor{});
    if (!owned || !record) return nullptr;
    record->accessor = std::move(owned);

    record->GetColor = [](const DynamicAccessor& self, unsigned int x, unsigned int y, Color& out) {
        static_cast<const View&>(*self.accessor).GetColor(x, y, out);
    };
    if constexpr (requires { view.GetValue(0, 0); }) {
        record->GetValue = [](const DynamicAccessor& self, unsigned int x, unsigned int y) {
            return static_cast<const View&>(*self.accessor).GetValue(x, y);
        };
    }
    if constexpr (Writable) {
        record->SetColor = [](const DynamicAccessor& self, unsigned int x, unsigned int y, const Color& in) {
            static_cast<const View&>(*self.accessor).SetColor(x, y, in);
        };
        if constexpr (requires { view.SetValue(0, 0, 0); }) {
            record->SetValue = [](const DynamicAccessor& self, unsigned int x, unsigned int y, unsigned int value) {
                static_cast<const View&>(*self.accessor).SetValue(x, y, value);
            };
        }
    } else {
        record->SetColor = SetNoColor;
        record->SetValue = SetNoValue;
    }
    return record;
}

template <typename Image>
std::unique_ptr<DynamicAccessor> Make(Image& image, PixelFormat format, bool throughPalette) {
    constexpr bool writable = !std::is_const_v<Image>;
    using Byte = std::conditional_t<writable, unsigned char, const unsigned char>;
    return DispatchFormat(format, std::unique_ptr<DynamicAccessor>(), [&]<PixelFormat F>() {
        if (throughPalette) {
            if (auto* const palette = image.GetPalette()) {
                return Bind<writable>(ViewOf<PackedIndexAccessor<F, Byte>>(image, palette));
            }
        }
        return Bind<writable>(ViewOf<DirectAccessor<F, Byte>>(image));
    });
}

}  // namespace

std::unique_ptr<DynamicAccessor> MakeAccessor(IQorImage& image) {
    return Make(image, image.GetPixelFormat(), true);
}
std::unique_ptr<DynamicAccessor> MakeConstAccessor(const IQorImage& image) {
    return Make(image, image.GetPixelFormat(), true);
}
std::unique_ptr<DynamicAccessor> MakeDirectAccessor(IQorImage& image, PixelFormat format) {
    return Make(image, format, false);
}
std::unique_ptr<DynamicAccessor> MakeConstDirectAccessor(const IQorImage& image, PixelFormat format) {
    return Make(image, format, false);
}

}  // namespace vantu
