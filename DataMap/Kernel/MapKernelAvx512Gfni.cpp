// The kernel for processors with vectors of 64 bytes, any permutation of their bytes (VBMI), and bit matrices (GFNI).
// The build compiles this file, and no other code, with these instructions; MapKernel_Get() hands it out only where
// they can run.
#include "DataMap/Kernel/Vector64.h"
#include "DataMap/Kernel/VectorKernel.h"

namespace
{
struct STag
{
};

// What transposes the bits of every 8 bytes as the right side of a product; with the bytes of each pair of results
// exchanged.
constexpr std::uint64_t pixelMatrix = 0x0102040810204080U;
constexpr std::uint64_t pixelMatrixSwapped = 0x0201080420108040U;

// Matrices whose product with a byte has these bits of the byte as bits 0 to 7: 0, 2, 4, 6, 1, 3, 5, 7 (the pairs
// parted) and 0, 4, 1, 5, 2, 6, 3, 7 (the halves shuffled).
constexpr std::uint64_t pairMatrix = 0x0104104002082080U;
constexpr std::uint64_t shuffleMatrix = 0x0110022004400880U;
// As pixelMatrix, but bits 7, 3, 5, 1, 6, 2, 4 and 0 of all bytes become bytes 0 to 7.
constexpr std::uint64_t quadMatrix = 0x0110044002200880U;

// A vector of indices that follow a rule.
template<class TIndex>
struct SOrder
{
    template<class TRule>
    constexpr explicit SOrder(TRule rule)
    {
        for (int i = 0; i < static_cast<int>(64 / sizeof(TIndex)); ++i)
        {
            m_indices[i] = static_cast<TIndex>(rule(i));
        }
    }
    __m512i Load() const { return _mm512_load_si512(m_indices); }

    alignas(64) TIndex m_indices[64 / sizeof(TIndex)] = {};
};

// 0, 64, 1, 65, ... 31, 95: the bytes of two vectors in turns.
constexpr SOrder<unsigned char> orderLow([](int i) { return i / 2 + 64 * (i % 2); });
// 0, 2, 4, ... 126.
constexpr SOrder<unsigned char> orderEveryOther([](int i) { return 2 * i; });
// 16-bit words 0, 4, 8, ... 60, then 2, 6, 10, ... 62.
constexpr SOrder<std::uint16_t> orderQuads([](int i) { return 4 * (i % 16) + 2 * (i / 16); });

struct SVector32Gfni : SVector32<STag>
{
    static constexpr bool bTransposesWords = true;

    static Type Words_Transpose(Type value, bool bSwapPairs)
    {
        return _mm256_gf2p8affine_epi64_epi8(Set_Word(bSwapPairs ? pixelMatrixSwapped : pixelMatrix), value, 0);
    }
};

struct SVector64Gfni : SVector64<STag>
{
    using Half = SVector32Gfni;
    static constexpr bool bTransposesWords = true;
    static constexpr bool bLanesInOrder = true;
    static constexpr bool bPartsPairs = true;

    // Low8 and High8 interleave whole halves here, so that nothing is left to be ordered.
    static Type Low8(Type a, Type b) { return _mm512_permutex2var_epi8(a, orderLow.Load(), b); }
    static Type High8(Type a, Type b)
    {
        return _mm512_permutex2var_epi8(a, _mm512_or_si512(orderLow.Load(), Set(0x20)), b);
    }
    static Type Words_Transpose(Type value, bool bSwapPairs)
    {
        return _mm512_gf2p8affine_epi64_epi8(Set_Word(bSwapPairs ? pixelMatrixSwapped : pixelMatrix), value, 0);
    }

    static void Planes_Part(Type first, Type second, Type& high, Type& low)
    {
        const Type a = Nibbles_Exchange(_mm512_gf2p8affine_epi64_epi8(first, Set_Word(pairMatrix), 0));
        const Type b = Nibbles_Exchange(_mm512_gf2p8affine_epi64_epi8(second, Set_Word(pairMatrix), 0));
        high = _mm512_permutex2var_epi8(a, orderEveryOther.Load(), b);
        low = _mm512_permutex2var_epi8(a, _mm512_or_si512(orderEveryOther.Load(), Set(1)), b);
    }
    static void Quads_Part(Type first, Type second, Type& even, Type& odd)
    {
        const Type a = Quads_Gather(first);
        const Type b = Quads_Gather(second);
        even = _mm512_permutex2var_epi16(a, orderQuads.Load(), b);
        odd = _mm512_permutex2var_epi16(a, _mm512_or_si512(orderQuads.Load(), _mm512_set1_epi16(1)), b);
    }

private:
    // The low nibble of each first byte changes places with the high nibble of the byte behind it.
    static Type Nibbles_Exchange(Type x)
    {
        constexpr int differAnd = 0x28;  // (first ^ second) & third
        constexpr int differBoth = 0x96; // first ^ second ^ third
        const Type changed = _mm512_ternarylogic_epi64(x, ShiftRight16<12>(x), _mm512_set1_epi16(0x000F), differAnd);
        return _mm512_ternarylogic_epi64(x, changed, ShiftLeft16<12>(changed), differBoth);
    }
    // Every 8 bytes' high plane, even and odd pixels, and low plane, even and odd pixels: 2 bytes each.
    static Type Quads_Gather(Type x)
    {
        const Type gathered = Nibbles_Exchange(_mm512_gf2p8affine_epi64_epi8(Set_Word(quadMatrix), x, 0));
        return _mm512_gf2p8affine_epi64_epi8(gathered, Set_Word(shuffleMatrix), 0);
    }
};
using Vector = SVector64Gfni;

constexpr __mmask64 everyByte = ~__mmask64{0};

// Spreads a field by shifting: every board byte gets the eight source bits among which its pixel stands where the field
// does, and keeps the field's bits. A field that is one pixel twice gets the second bit by a product with a matrix, for
// which another unit of the processor is free than for a second shift.
template<int vectorCountOf, EFieldKind kind>
struct SShiftSpread
{
    using Type = Vector::Type;
    static constexpr int vectorCount = vectorCountOf;
    static constexpr bool bDouble = kind == Field_Double;

    SShiftSpread(const SFieldPattern& pattern, unsigned place)
    {
        const SFieldPlace<Vector, kind> field(pattern, place);
        const Type position = Vector::Set(static_cast<unsigned char>(field.m_lowestBit));
        const Type target = field.Row_Load(SFieldPattern::Row_Target, 0);
        if constexpr (bDouble)
        {
            // Row 7 - i of a matrix says which bits of the byte make bit i of the product.
            m_target = _mm512_movepi8_mask(target);
            m_field = Vector::Set_Word(std::uint64_t{0x0101} << (8 * (6 - field.m_lowestBit) + field.m_lowestBit));
        }
        else
        {
            m_field = Vector::And(target, field.Mask_Set(0xFF));
        }
        for (int i = 0; i < vectorCount; ++i)
        {
            m_shift[i] = _mm512_sub_epi8(field.Row_Load(SFieldPattern::Row_PixelBit, i * Vector::size), position);
        }
    }

    static Type Source_Spread(std::uint64_t source) { return Vector::Set_Word(source); }
    Type Combine(Type old, Type source, int index) const
    {
        const Type moved = _mm512_maskz_multishift_epi64_epi8(everyByte, m_shift[index], source);
        if constexpr (bDouble)
        {
            return Vector::Or(old, _mm512_maskz_gf2p8affine_epi64_epi8(m_target, moved, m_field, 0));
        }
        constexpr int orAnd = 0xF8; // first | (second & third)
        return _mm512_ternarylogic_epi64(old, moved, m_field, orAnd);
    }

    Type m_field; // the field's bits in the bytes that get a pixel; a double field's matrix
    Type m_shift[vectorCountOf];
    __mmask64 m_target = 0; // a double field's bytes that get a pixel
};
} // namespace

constinit const SMapKernel mapKernelAvx512Gfni =
    VectorKernel_Make<Vector, SFieldKernel<Vector, SShiftSpread>>("avx512-gfni");
