#pragma once

#include <vantu/CQorStorage.h>
#include <vantu/Color.h>
#include <vantu/Export.h>

#include <memory>

namespace vantu {

/// Turns a colour of a soft mask into an opacity (ISO 32000-2, 11.5 and 7.10).
///
/// The source value x of a colour is A / 255 or ((R * 0.3 + G * 0.59) + B * 0.11) / 255, in double precision. Results
/// are not clamped. `ComputeAlpha` may run on any number of threads at once; `Restore` and assignment need the
/// object to themselves.
class VANTU_API IPDFTransferFunction {
public:
    /// What is taken from the colour. Persisted in one bit.
    enum class SourceType : unsigned int {
        Alpha = 0,       ///< the alpha channel
        Luminosity = 1,  ///< the weighted grey value of the colour channels
    };
    /// Which class an object is; the numbers of the PDF FunctionType entry, 0 for identity.
    enum class Type : unsigned int {
        Identity = 0,
        Exponential = 2,
        Postscript = 4,
    };

    /// Copies what the values are taken from.
    /// @{
    IPDFTransferFunction(const IPDFTransferFunction&) = default;
    IPDFTransferFunction& operator=(const IPDFTransferFunction&) = default;
    /// @}
    virtual ~IPDFTransferFunction() = default;

    /// Which class this is. A host's own class gives the nearest; the blender looks at it only to tell a stencil.
    [[nodiscard]] virtual Type GetType() const = 0;
    /// The opacity of a mask colour: 0 protects, 1 paints. The library's own classes never throw here; a host's own
    /// class is called once per pixel in walking order.
    /// @param color straight.
    /// @return the opacity, not clamped.
    [[nodiscard]] virtual double ComputeAlpha(const Color& color) const = 0;
    /// Writes the payload of the record.
    /// @param storage may be null to measure.
    /// @return bytes written, or the size.
    virtual unsigned int Save(CQorStorage* storage) const = 0;
    /// Reads the payload into this object.
    /// @param storage read from its present position.
    /// @return false on a short read; what was read until then stays.
    virtual bool Restore(CQorStorage& storage) = 0;

    /// What the values are taken from.
    [[nodiscard]] SourceType GetSourceType() const { return sourceType_; }

    /// Writes a whole record: a tag byte (type in bits 0 to 6, source in bit 7) and the payload.
    /// @param function the function to write.
    /// @param storage may be null to measure. @return bytes written, or the size of the record.
    static unsigned int Save(const IPDFTransferFunction& function, CQorStorage* storage);
    /// Reads a whole record and puts a new object of its class in `out`.
    ///
    /// A record that is empty leaves `out`; a tag of type 1 or 3 empties it; a tag above 4 makes no new object, and
    /// the object that `out` holds reads its own payload.
    /// @param[in,out] out see above.
    /// @param storage read from its present position.
    /// @return false for those first two, if `out` is empty, or if the payload is short.
    static bool Restore(std::shared_ptr<IPDFTransferFunction>& out, CQorStorage& storage);

protected:
    /// @param source what the values are taken from.
    explicit IPDFTransferFunction(SourceType source) : sourceType_(source) {}

private:
    SourceType sourceType_;
};

}  // namespace vantu
