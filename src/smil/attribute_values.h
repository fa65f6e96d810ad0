// Attribute values in the forms in which the presentation model stores them.
#ifndef MMSBRIX_SMIL_ATTRIBUTE_VALUES_H
#define MMSBRIX_SMIL_ATTRIBUTE_VALUES_H

namespace mmsbrix {

/// The number that a text begins with: blanks, a sign, decimal digits; whatever follows, a unit
/// say, is left out.  0 for a null text or one without digits; a number beyond the range is the
/// nearest one.
[[nodiscard]] int leadingNumber(const char* text) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_ATTRIBUTE_VALUES_H
