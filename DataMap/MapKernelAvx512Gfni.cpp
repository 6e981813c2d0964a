// The kernel for processors with vectors of 64 bytes, any permutation of their bytes (VBMI), and bit matrices (GFNI).
// The build compiles this file, and no other code, with these instructions; MapKernel_Get() hands it out only where
// they can run.
#include "DataMap/Vector64.h"
#include "DataMap/VectorKernel.h"

namespace
{
struct STag
{
};

// What transposes the bits of every 8 bytes as the right side of a product; with the bytes of each pair of results
// exchanged.
constexpr std::uint64_t pixelMatrix = 0x0102040810204080U;
constexpr std::uint64_t pixelMatrixSwapped = 0x0201080420108040U;

// The matrix whose product with a byte has bit 0, 2, 4, 6, 1, 3, 5, 7 of the byte as bits 0 to 7.
constexpr std::uint64_t pairMatrix = 0x0104104002082080U;

struct SVector32Gfni : SVector32<STag>
{
    static constexpr bool bTransposesWords = true;

    static void Words_Transpose(Type (&values)[8], bool bSwapPairs)
    {
        const Type pixels = Set_Word(bSwapPairs ? pixelMatrixSwapped : pixelMatrix);
        for (Type& value : values)
        {
            value = _mm256_gf2p8affine_epi64_epi8(pixels, value, 0);
        }
    }
    static Type Pairs_Part(Type x) { return _mm256_gf2p8affine_epi64_epi8(x, Set_Word(pairMatrix), 0); }
};

struct SVector64Gfni : SVector64<STag>
{
    using Half = SVector32Gfni;
    static constexpr bool bTransposesWords = true;

    // Low8 and High8 interleave whole halves here, so that nothing is left to be ordered.
    static Type Low8(Type a, Type b) { return _mm512_permutex2var_epi8(a, Order_Low(), b); }
    static Type High8(Type a, Type b)
    {
        return _mm512_permutex2var_epi8(a, _mm512_or_si512(Order_Low(), Set(0x20)), b);
    }
    template<int count>
    static void Lanes_Order(Type (&/*values*/)[count])
    {
    }

    static void Words_Transpose(Type (&values)[8], bool bSwapPairs)
    {
        const Type pixels = Set_Word(bSwapPairs ? pixelMatrixSwapped : pixelMatrix);
        for (Type& value : values)
        {
            value = _mm512_gf2p8affine_epi64_epi8(pixels, value, 0);
        }
    }

    // Every byte's pairs of bits parted: the high bits in its high half, the low bits in its low half.
    static Type Pairs_Part(Type x) { return _mm512_gf2p8affine_epi64_epi8(x, Set_Word(pairMatrix), 0); }

private:
    // 0, 64, 1, 65, ... 31, 95: the bytes of two vectors in turns.
    static Type Order_Low()
    {
        alignas(64) static constexpr unsigned char order[64] = {
            0,  64, 1,  65, 2,  66, 3,  67, 4,  68, 5,  69, 6,  70, 7,  71, 8,  72, 9,  73, 10, 74,
            11, 75, 12, 76, 13, 77, 14, 78, 15, 79, 16, 80, 17, 81, 18, 82, 19, 83, 20, 84, 21, 85,
            22, 86, 23, 87, 24, 88, 25, 89, 26, 90, 27, 91, 28, 92, 29, 93, 30, 94, 31, 95};
        return Load(order);
    }
};
using Vector = SVector64Gfni;
using Kernel = SVectorKernel<Vector>;

constexpr __mmask64 everyByte = ~__mmask64{0};

// Spreads a field by shifting: every board byte gets the eight source bits among which its pixel stands where the field
// does, and keeps the field's bits.
template<int vectorCountOf, EFieldKind kind>
struct SShiftSpread
{
    using Type = Vector::Type;
    static constexpr int vectorCount = vectorCountOf;
    static constexpr bool bDouble = kind == Field_Double;

    SShiftSpread(const unsigned char* pattern, unsigned lowestBit, unsigned mask)
    {
        const unsigned moved = bDouble ? 1U << lowestBit : mask;
        const Type position = Vector::Set(static_cast<unsigned char>(lowestBit));
        const Type target = Vector::Load(pattern + SFieldPattern::Row_Target * SFieldPattern::size);
        m_field = Vector::And(target, Vector::Set(static_cast<unsigned char>(moved)));
        m_upper = Vector::And(target, Vector::Set(static_cast<unsigned char>(moved << 1)));
        for (int i = 0; i < vectorCount; ++i)
        {
            const Type bit = Vector::Load(pattern + SFieldPattern::Row_PixelBit * SFieldPattern::size + i * Vector::size);
            m_shift[i] = _mm512_sub_epi8(bit, position);
            m_upperShift[i] = _mm512_sub_epi8(m_shift[i], Vector::Set(1));
        }
    }

    static Type Source_Spread(std::uint64_t source) { return Vector::Set_Word(source); }
    Type Combine(Type old, Type source, int index) const
    {
        constexpr int orAnd = 0xF8; // first | (second & third)
        const Type moved = _mm512_maskz_multishift_epi64_epi8(everyByte, m_shift[index], source);
        const Type value = _mm512_ternarylogic_epi64(old, moved, m_field, orAnd);
        if constexpr (bDouble)
        {
            const Type upper = _mm512_maskz_multishift_epi64_epi8(everyByte, m_upperShift[index], source);
            return _mm512_ternarylogic_epi64(value, upper, m_upper, orAnd);
        }
        return value;
    }

    Type m_field;
    Type m_upper;
    Type m_shift[vectorCountOf];
    Type m_upperShift[vectorCountOf];
};
} // namespace

const SMapKernel mapKernelAvx512Gfni = {"avx512-gfni",
                                        &SFieldKernel<Vector, SShiftSpread>::functions,
                                        Kernel::Rows_Transpose,
                                        Kernel::Columns_Map<false>,
                                        Kernel::Columns_Map<true>,
                                        Kernel::Planes_Split,
                                        Kernel::Quads_Split,
                                        Kernel::Nibbles_Expand};
