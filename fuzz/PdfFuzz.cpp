#include <vantu/CQorImage.h>

#include <memory>

#include "examples/pdf/Interpreter.h"
#include "examples/pdf/Objects.h"
#include "fuzz/Fuzz.h"

namespace {

constexpr int kSide = 32;

// Never destroyed: the PDF library's own statics may be gone by then.
pdf::PageContext& TheContext() {
    static auto& context = *new pdf::PageContext(IMAGEOP_FUZZ_PAGE);
    return context;
}

}  // namespace

// The input is the content of a page whose resources have something of every kind.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    pdf::PageContext& context = TheContext();
    context.budget = {1000, 8};
    context.notes = {};
    context.contents = {};  // it knows streams by their numbers, and each input has the same
    const QPDFObjectHandle resources = pdf::Entry(context.document.Page(0), "/Resources");
    const std::string content(reinterpret_cast<const char*>(data), size);
    const auto image = std::make_shared<vantu::CQorImage>(kSide, kSide, vantu::PixelFormat::Bgra32Premultiplied,
                                                          static_cast<unsigned char>(0), false);
    const pdf::Pixels all{0, 0, kSide, kSide};
    pdf::Canvas canvas(image, all, context.calls);
    const pdf::GraphicsState state{{1, 0, 0, -1, 0, kSide}, {all, nullptr}};
    const auto owner = QPDF::create();
    pdf::Interpreter(context, canvas, resources, state).Paint(QPDFObjectHandle::newStream(owner.get(), content));
    return 0;
}
