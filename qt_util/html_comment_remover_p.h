#pragma once

// Comment removal for the HTML converter, which runs before anything else is read: a removal can
// join a text run or a tag across the comment.
//
// The converter relies on this giving exactly what repeated whole-text searches give: find the
// first "<!--" (at s) and the first "-->" (at e) of the current text, stop unless e > s + 3, else
// remove [s, e + 3) and search again from the start. Done that way, text with many comments
// costs quadratic time; this does it in one pass.
//
// What lies in front of s holds neither marker, so the next search can only find one that starts
// a few characters in front of s, where the removal joined two pieces, or behind it. The pass
// therefore looks for the markers in order: a "-->" before any "<!--" stops it, as does a "<!--"
// without a "-->" more than three characters behind it; after a removal it checks the join first,
// which can cut up to three characters it already kept. Markers are found by their "!" and their
// first "-", a block at a time; until the first removal only by the "!", since most texts hold no
// comment but may hold many "-", and a "-->" in front of the first "<!--" is then looked for once.
//
// The kept text is written into a buffer the caller provides, as far as it has room; the caller
// may then take all but the last three characters out of it, move the rest to its front and ask
// for more. So a conversion can take comment-heavy text through a small buffer that stays in the
// cache instead of writing a second copy of the whole text.

#include <QChar>

namespace qt_util::internal::html {

class CommentRemover {
 public:
  CommentRemover(const QChar* source, int size) : source_(source), size_(size) {}

  // Reads up to the first removal without copying anything. False when the text keeps every
  // character; else the kept text is its prefix in front of the first comment, then the rest.
  bool RemovesAnything();

  // After RemovesAnything: appends kept text to out[keptSize, capacity), where out[0, keptSize)
  // holds what came before (at least its last three characters), until the buffer is full or
  // the text is done.
  void Fill(QChar* out, int& keptSize, int capacity);

  // All kept text has been handed out.
  bool Done() const { return prefix_ >= prefixEnd_ && in_ >= size_; }

 private:
  QChar At(int k) const;
  bool OpensAt(int k) const;
  bool ClosesAt(int k) const;
  int FindClose(int from) const;
  bool Remove(int open);
  void SkipToExclamationMark();
  void Advance();
  void Step();

  const QChar* const source_;
  const int size_;
  int in_ = 0;            // source_[in_, size_) is still to read; it follows the kept text
  int keptSize_ = 0;      // out_[0, keptSize_) holds the kept text so far
  QChar* out_ = nullptr;  // null before the first removal
  int capacity_ = 0;
  int prefix_ = 0;  // source_[prefix_, prefixEnd_) is kept text still to hand out
  int prefixEnd_ = 0;
  bool joined_ = false;   // a removal has just joined two pieces
  bool stopped_ = false;  // the search has stopped: the rest is kept as it stands
};

}  // namespace qt_util::internal::html
