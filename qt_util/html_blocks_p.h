#pragma once

// Eight characters of a text tested at once: the primitives every scan of the HTML converter is
// made of. Text runs, tags and tag names are a few to a few dozen characters long, so a block
// test ends most scans after one or two blocks, where a character loop takes a branch per
// character and mispredicts its exit. With SSE2 (every x86-64 processor) a block is one register;
// without it, or built with QT_UTIL_HTML_PORTABLE, the same operations run as loops with the same
// results.
//
// The converter relies on this: a block reads exactly [p, p + 8), so nothing outside the text is
// read as long as a block is only loaded where eight characters remain (Scan loads them only
// there); a BlockMask holds nothing but characters of its block, and callers combine masks with
// its operations, never with its bits. Everything here is inline: the main loop calls it per
// character block. Debug builds check the arithmetic with Q_ASSERT.

#include <QChar>
#include <QtAlgorithms>
#include <QtGlobal>
#include <cstdint>

#if defined(__SSE2__) && !defined(QT_UTIL_HTML_PORTABLE)
#define QT_UTIL_HTML_BLOCKS_SSE2 1
#include <emmintrin.h>
#endif

namespace qt_util::internal::html {

// ASCII lower case of one character; any other character as it is.
constexpr ushort AsciiLower(ushort c) {
  return ushort(c + (ushort(c - 'A') < 26 ? 'a' - 'A' : 0));
}

// The characters of one block that a test picked. Character i is bit 2i, the layout of a byte
// mask over two-byte characters, which is what SSE2 produces without a further step.
class BlockMask {
 public:
  constexpr BlockMask() = default;

  explicit operator bool() const { return bits_ != 0; }
  // The index of the first character picked; there must be one.
  int First() const {
    Q_ASSERT(bits_ != 0);
    return int(qCountTrailingZeroBits(bits_)) >> 1;
  }
  // The first character alone.
  BlockMask Lowest() const { return BlockMask(bits_ & (0u - bits_)); }
  // All but the first character.
  BlockMask WithoutFirst() const { return BlockMask(bits_ & (bits_ - 1)); }
  // The characters in front of the first one picked; all of them when none is.
  BlockMask Before() const { return BlockMask(((bits_ & (0u - bits_)) - 1) & kAll); }
  bool Has(int index) const {
    Q_ASSERT(index >= 0 && index < 8);
    return (bits_ >> (2 * index)) & 1u;
  }
  // The number of characters picked, without the library call that a population count becomes
  // on processors the build does not assume to have the instruction.
  int Count() const {
    unsigned n = (bits_ & 0x3333u) + ((bits_ >> 2) & 0x3333u);
    n = (n + (n >> 4)) & 0x0f0fu;
    n = (n + (n >> 8)) & 0x1fu;
    Q_ASSERT(n <= 8);
    return int(n);
  }
  // The characters behind (and including) an odd number of picked ones: the inside of quotes
  // when the picked characters are quotes of one kind and the block starts outside them.
  BlockMask PrefixParity() const {
    unsigned odd = bits_;
    odd ^= odd << 2;
    odd ^= odd << 4;
    odd ^= odd << 8;
    return BlockMask(odd & kAll);
  }

  friend BlockMask operator|(BlockMask a, BlockMask b) { return BlockMask(a.bits_ | b.bits_); }
  friend BlockMask operator&(BlockMask a, BlockMask b) { return BlockMask(a.bits_ & b.bits_); }
  friend BlockMask operator^(BlockMask a, BlockMask b) { return BlockMask(a.bits_ ^ b.bits_); }
  // The characters of the block not picked.
  BlockMask operator~() const { return BlockMask(~bits_ & kAll); }

 private:
  friend class Chars8;
  static constexpr unsigned kAll = 0x5555u;

  explicit BlockMask(unsigned bits) : bits_(bits) { Q_ASSERT((bits & ~kAll) == 0); }

  unsigned bits_ = 0;
};

// Eight characters of a text.
class Chars8 {
 public:
  static constexpr int kCount = 8;

  // Reads p[0, 8).
#if defined(QT_UTIL_HTML_BLOCKS_SSE2)
  explicit Chars8(const QChar* p) : chars_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))) {}
#else
  explicit Chars8(const QChar* p) : chars_(p) {}
#endif

  // The characters equal to one of `c`.
  template <typename... C>
  BlockMask Match(C... c) const {
#if defined(QT_UTIL_HTML_BLOCKS_SSE2)
    __m128i any = _mm_setzero_si128();
    ((any = _mm_or_si128(any, _mm_cmpeq_epi16(chars_, _mm_set1_epi16(short(c))))), ...);
    return BlockMask(unsigned(_mm_movemask_epi8(any)) & BlockMask::kAll);
#else
    unsigned mask = 0;
    for (int i = 0; i < kCount; ++i) {
      const ushort u = chars_[i].unicode();
      if (((u == ushort(c)) || ...)) mask |= 1u << (2 * i);
    }
    return BlockMask(mask);
#endif
  }

  // The block from its character `count` (1 or 2) on; the characters moved in behind it are
  // never to be read.
  Chars8 From(int count) const {
    Q_ASSERT(count == 1 || count == 2);
#if defined(QT_UTIL_HTML_BLOCKS_SSE2)
    const __m128i two = _mm_set1_epi16(short(-(count == 2)));
    return Chars8(_mm_or_si128(_mm_andnot_si128(two, _mm_srli_si128(chars_, 2)),
                               _mm_and_si128(two, _mm_srli_si128(chars_, 4))));
#else
    return Chars8(chars_ + count);
#endif
  }

  // Characters [0, length), lower-cased, one byte each in `packed` (character i in byte i), the
  // rest 0; false when one of them is not plain ASCII. Without a branch per character.
  bool PackLower(int length, uint64_t& packed) const {
    Q_ASSERT(length >= 0 && length <= kCount);
#if defined(QT_UTIL_HTML_BLOCKS_SSE2)
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    __m128i v = _mm_and_si128(chars_, _mm_cmplt_epi16(lane, _mm_set1_epi16(short(length))));
    const __m128i ascii =
        _mm_cmpeq_epi16(_mm_and_si128(v, _mm_set1_epi16(short(0xff80))), _mm_setzero_si128());
    if (_mm_movemask_epi8(ascii) != 0xffff) return false;
    const __m128i upper = _mm_and_si128(_mm_cmpgt_epi16(v, _mm_set1_epi16('A' - 1)),
                                        _mm_cmplt_epi16(v, _mm_set1_epi16('Z' + 1)));
    v = _mm_add_epi16(v, _mm_and_si128(upper, _mm_set1_epi16('a' - 'A')));
    packed = uint64_t(_mm_cvtsi128_si64(_mm_packus_epi16(v, v)));
#else
    packed = 0;
    for (int i = 0; i < length; ++i) {
      const ushort c = chars_[i].unicode();
      if (c >= 0x80) return false;
      packed |= uint64_t(AsciiLower(c)) << (8 * i);
    }
#endif
    return true;
  }

 private:
#if defined(QT_UTIL_HTML_BLOCKS_SSE2)
  explicit Chars8(__m128i chars) : chars_(chars) {}
  __m128i chars_;
#else
  const QChar* chars_;
#endif
};

// The first position in [p, end) where a scan stops, or `end`: a block at a time while eight
// characters are left, then one character at a time. `block(chars, at)` gets the block read at
// `at` and picks the characters the scan stops at (it may note what it saw in front of them);
// `single(at)` says whether it stops at the character at `at`. Both must agree.
template <typename Block, typename Single>
Q_ALWAYS_INLINE const QChar* Scan(const QChar* p, const QChar* end, Block&& block,
                                  Single&& single) {
  Q_ASSERT(p <= end);
  for (; end - p >= Chars8::kCount; p += Chars8::kCount) {
    if (const BlockMask stop = block(Chars8(p), p)) return p + stop.First();
  }
  while (p < end && !single(p)) ++p;
  return p;
}

// The first character in [p, end) that is one of `C`, or `end`.
template <char16_t... C>
Q_ALWAYS_INLINE const QChar* FindAny(const QChar* p, const QChar* end) {
  return Scan(
      p, end, [](const Chars8& chars, const QChar*) { return chars.Match(C...); },
      [](const QChar* at) { return ((at->unicode() == C) || ...); });
}

}  // namespace qt_util::internal::html
