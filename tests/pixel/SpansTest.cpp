#include "pixel/Spans.h"

#include <gtest/gtest.h>

#include "pixel/DynamicAccessor.h"
#include "support/Picture.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

class SpanCodecs : public testing::TestWithParam<PixelFormat> {
protected:
    /// Calls `check(codec, random, image, packed)` with the codec of each instruction set, for random images of
    /// different widths and row orders and as many packed pixels.
    template <typename Check>
    void ForCodecs(Check check) {
        const auto run = [&](const SpanCodec& codec) {
            Random random(7);
            for (unsigned int width = 0; width < 70; ++width) {
                TestImage image(Shape{width, 1 + width % 3, GetParam(), 3, width % 2 != 0}, random);
                const auto form =
                    codec.colors == PackedColors::Straight ? PixelFormat::Bgra32 : PixelFormat::Bgra32Premultiplied;
                TestImage packed(Shape{width, 1 + width % 3, form, 0}, random);
                check(codec, random, image, packed);
                EXPECT_TRUE(image.GuardsIntact() && packed.GuardsIntact()) << width;
            }
        };
        run(ScalarSpanCodecs().Of(GetParam()));
        for (const VectorTarget& target : VectorTargets()) {
            SCOPED_TRACE(target.name);
            const ForcedTarget forced(target);
            run(ActiveSpanCodecs().Of(GetParam()));
        }
    }
};

/// The colour of pixel `i`, counted row by row.
unsigned int ColorAt(const TestImage& image, unsigned int i) {
    Color color;
    const auto record = MakeConstAccessor(image);
    record->GetColor(*record, i % image.GetWidth(), i / image.GetWidth(), color);
    return Argb(color);
}

TEST_P(SpanCodecs, ReadPixelsAsTheyAre) {
    ForCodecs([](const SpanCodec& codec, Random&, TestImage& image, TestImage& packed) {
        const IQorImage& source = image;
        codec.read(RowsFromTop(source, image.GetPixelFormat()), image.GetWidth(), packed.GetPixelData());
        for (unsigned int i = 0; i < packed.Bytes().size() / 4; ++i) {
            ASSERT_EQ(ColorAt(packed, i), ColorAt(image, i)) << i;
        }
        if (codec.keepsUnwritten) return;
        const auto before = image.Bytes();
        codec.write(RowsFromTop(image, image.GetPixelFormat()), image.GetWidth(), packed.GetPixelData(), nullptr);
        EXPECT_EQ(image.Bytes(), before) << "reading and writing gives the bytes back";
    });
}

TEST_P(SpanCodecs, WriteSelectedPixelsByTheRuleOfTheFormat) {
    ForCodecs([](const SpanCodec& codec, Random& random, TestImage& image, TestImage& packed) {
        const auto pixels = static_cast<unsigned int>(packed.Bytes().size() / 4);
        const bool hasAlpha = HasAlpha(image.GetPixelFormat());
        for (unsigned int i = 0; i < pixels && !hasAlpha; ++i) packed.GetPixelData()[4 * i + 3] = 255;
        for (const bool all : {false, true}) {
            std::vector<unsigned char> select(pixels + 1);
            for (auto& s : select) s = static_cast<unsigned char>(random() % 2 * (1 + random() % 255));
            std::vector<unsigned int> expected;
            TestImage one(Shape{1, 1, image.GetPixelFormat()});
            const auto record = MakeAccessor(one);
            for (unsigned int i = 0; i < pixels; ++i) {
                // Premultiplied bytes are moved as they are; colours of the other formats go through their writing.
                const unsigned char* const p = packed.GetPixelData() + std::size_t{4} * i;
                if (hasAlpha) {
                    std::copy_n(p, 4, one.GetPixelData());
                    if (image.GetPixelFormat() == PixelFormat::Bgra32Inverted) one.GetPixelData()[3] ^= 0xFF;
                } else {
                    record->SetColor(*record, 0, 0, Color(ColorAt(packed, i)));
                }
                const bool written = all || select[i] != 0;
                expected.push_back(written ? ValueAt(one, 0, 0)
                                           : ValueAt(image, i % image.GetWidth(), i / image.GetWidth()));
            }
            codec.write(RowsFromTop(image, image.GetPixelFormat()), image.GetWidth(), packed.GetPixelData(),
                        all ? nullptr : select.data());
            for (unsigned int i = 0; i < pixels; ++i) {
                ASSERT_EQ(ValueAt(image, i % image.GetWidth(), i / image.GetWidth()), expected[i]) << i;
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Formats, SpanCodecs, testing::ValuesIn(kPixelFormats.begin() + 3, kPixelFormats.end()),
                         [](const auto& format) { return std::to_string(static_cast<unsigned int>(format.param)); });

}  // namespace
}  // namespace vantu::test
