// What has to be one and the same on both sides of a shared library: a host's classes behind the library's interfaces,
// the library's classes in the host's casts, and exceptions on their way through.

#include <vantu/imageop.h>

#include <iostream>
#include <stdexcept>
#include <typeinfo>

using namespace vantu;

namespace {

struct HostImage : CQorImage {
    using CQorImage::CQorImage;
};

struct HostError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct HostFactory : IGraphicsFactory {
    bool full = false;

    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void**) override {
        if (full) throw HostError("no room");
        return std::make_shared<HostImage>(width, height, format, static_cast<unsigned char>(4), bottomUp);
    }
};

struct HalfOpacity : IPDFTransferFunction {
    HalfOpacity() : IPDFTransferFunction(SourceType::Luminosity) {}
    using IPDFTransferFunction::Restore;
    using IPDFTransferFunction::Save;

    Type GetType() const override { return Type::Identity; }
    double ComputeAlpha(const Color&) const override { return 0.5; }
    unsigned int Save(CQorStorage*) const override { return 0; }
    bool Restore(CQorStorage&) override { return true; }
};

struct NoSurface : IRasterizer {
    std::shared_ptr<RasterSurface> GetRasterSurface() override { return nullptr; }
};

bool ImagesKeepTheirClass() {
    HostFactory factory;
    const std::shared_ptr<IQorImage> clone =
        ImageUtil::Clone(CQorImage(2, 2, PixelFormat::Bgr24, 4, true), &factory, nullptr);
    const std::shared_ptr<IQorImage> plain = ImageUtil::Clone(*clone, nullptr, nullptr);
    return dynamic_cast<HostImage*>(clone.get()) && typeid(*plain) == typeid(CQorImage);
}

bool ExceptionsPass() {
    HostFactory factory;
    factory.full = true;
    try {
        (void)ImageUtil::Clone(CQorImage(2, 2, PixelFormat::Bgr24, 4, true), &factory, nullptr);
        return false;
    } catch (const HostError&) {
        return true;
    }
}

bool FunctionsKeepTheirClass() {
    CQorStorage storage;
    const CExponentialPDFTransferFunction square(IPDFTransferFunction::SourceType::Alpha, 0, 1, 2);
    IPDFTransferFunction::Save(square, &storage);
    std::shared_ptr<IPDFTransferFunction> restored;
    return IPDFTransferFunction::Restore(restored, storage) &&
           dynamic_cast<CExponentialPDFTransferFunction*>(restored.get()) && typeid(*restored) == typeid(square);
}

/// Paints white on black through a mask, whose grey 255 the host's function makes a half.
bool HostFunctionIsCalled() {
    const Range<int, 2> all{0, 0, 2, 2};
    auto paper = std::make_shared<CQorImage>(2, 2, PixelFormat::Bgr24, 4, true);
    auto sheet = std::make_shared<HostImage>(2, 2, PixelFormat::Bgr24, 4, true);
    auto mask = std::make_shared<CQorImage>(2, 2, PixelFormat::Bgr24, 4, true);
    ImageUtil::Clear(*sheet, 0xFFFFFFFF, all);
    ImageUtil::Clear(*mask, 0xFFFFFFFF, all);
    std::shared_ptr<IRasterizer> rasterizer = std::make_shared<NoSurface>();
    const auto blender = IPDFImageBlender::Create(rasterizer, paper);
    auto where = IPDFImageBlender::CreateCoverage(), painted = IPDFImageBlender::CreateCoverage();
    where->AddRange(all);
    return blender->Blend(sheet, where, {0, 0}, mask, std::make_shared<HalfOpacity>(), {0, 0}, 255, BlendMode::Normal,
                          painted) &&
           paper->GetPixelData()[0] == 127;
}

}  // namespace

int main() {
    int failures = 0;
    const auto check = [&](const char* name, bool holds) {
        if (!holds) std::cerr << "boundary: not so: " << name << '\n';
        failures += !holds;
    };
    check("images keep their class", ImagesKeepTheirClass());
    check("exceptions pass", ExceptionsPass());
    check("functions keep their class", FunctionsKeepTheirClass());
    check("a host's function is called", HostFunctionIsCalled());
    return failures;
}
