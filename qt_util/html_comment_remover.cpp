#include "qt_util/html_comment_remover_p.h"

#include <algorithm>

#include "qt_util/html_blocks_p.h"

namespace qt_util::internal::html {

bool CommentRemover::RemovesAnything() {
  for (;;) {
    SkipToExclamationMark();
    if (in_ >= size_) return false;
    // A "<!--" whose "!" stands at in_; keptSize_ == in_ until the first removal.
    if (OpensAt(in_ - 1)) {
      const int close = FindClose(0);
      if (close >= 0 && close < in_ - 1) return false;
      if (!Remove(in_ - 1)) return false;
      joined_ = true;
      return true;
    }
    ++in_;
    keptSize_ = in_;
  }
}

void CommentRemover::Fill(QChar* out, int& keptSize, int capacity) {
  out_ = out;
  keptSize_ = keptSize;
  capacity_ = capacity;
  while (!Done() && keptSize_ < capacity_) {
    if (prefix_ < prefixEnd_) {
      const int count = std::min(prefixEnd_ - prefix_, capacity_ - keptSize_);
      std::copy(source_ + prefix_, source_ + prefix_ + count, out_ + keptSize_);
      prefix_ += count;
      keptSize_ += count;
    } else if (stopped_ || in_ >= size_) {
      const int count = std::min(size_ - in_, capacity_ - keptSize_);
      std::copy(source_ + in_, source_ + in_ + count, out_ + keptSize_);
      in_ += count;
      keptSize_ += count;
    } else {
      Step();
    }
  }
  Q_ASSERT(keptSize_ <= capacity_);
  keptSize = keptSize_;
}

// Character k of the current text (the kept text, then the rest of the source); NUL past its
// end, which no marker holds. Before the first removal the kept text is the source's prefix.
QChar CommentRemover::At(int k) const {
  if (k < keptSize_) return out_ ? out_[k] : source_[k];
  const int index = in_ + (k - keptSize_);
  return index < size_ ? source_[index] : QChar();
}

bool CommentRemover::OpensAt(int k) const {
  return k >= 0 && At(k) == QLatin1Char('<') && At(k + 1) == QLatin1Char('!') &&
         At(k + 2) == QLatin1Char('-') && At(k + 3) == QLatin1Char('-');
}

bool CommentRemover::ClosesAt(int k) const {
  return k >= 0 && At(k) == QLatin1Char('-') && At(k + 1) == QLatin1Char('-') &&
         At(k + 2) == QLatin1Char('>');
}

// The first "-->" of the current text at or behind position `from`, or -1.
int CommentRemover::FindClose(int from) const {
  int index = from;  // before the first removal positions are source indexes
  if (out_) {
    for (int k = from; k < keptSize_; ++k) {
      if (ClosesAt(k)) return k;
    }
    index = std::max(in_, in_ + (from - keptSize_));
  }
  for (;; ++index) {
    if (size_ - index < 3) return -1;
    index = int(FindAny<u'-'>(source_ + index, source_ + size_) - source_);
    if (size_ - index < 3) return -1;
    if (source_[index + 1] == QLatin1Char('-') && source_[index + 2] == QLatin1Char('>')) {
      return keptSize_ + (index - in_);
    }
  }
}

// Removes the comment that opens at `open`, or returns false when the search stops there.
bool CommentRemover::Remove(int open) {
  const int close = FindClose(open + 2);
  if (close < 0 || close <= open + 3) return false;
  // The text from `open` on comes from the source: `open` is at most a few characters in front
  // of keptSize_, and whatever of it was kept is cut off again.
  in_ += close + 3 - keptSize_;
  if (out_) {
    keptSize_ = open;
  } else {
    prefixEnd_ = open;  // the source's prefix, handed out by Fill before anything else
  }
  return true;
}

// Before the first removal: on to the next "!" or the end.
void CommentRemover::SkipToExclamationMark() {
  in_ = int(FindAny<u'!'>(source_ + in_, source_ + size_) - source_);
  keptSize_ = in_;
}

// Copies source characters to the kept text up to the next "!" or "-", the end, or a full
// buffer.
void CommentRemover::Advance() {
  const int end = in_ + std::min(size_ - in_, capacity_ - keptSize_);
  const int stop = int(FindAny<u'!', u'-'>(source_ + in_, source_ + end) - source_);
  std::copy(source_ + in_, source_ + stop, out_ + keptSize_);
  keptSize_ += stop - in_;
  in_ = stop;
}

// One step after the first removal: the join, or the text up to the next marker character and
// that character.
void CommentRemover::Step() {
  if (joined_) {
    // A marker may start in the last three kept characters and end behind them; the first one
    // there decides, as a "-->" in front of any "<!--" would.
    joined_ = false;
    for (int k = std::max(0, keptSize_ - 3); k < keptSize_; ++k) {
      if (out_[k] != QLatin1Char('-') && out_[k] != QLatin1Char('<')) continue;
      if (ClosesAt(k)) {
        stopped_ = true;
        return;
      }
      if (OpensAt(k)) {
        joined_ = Remove(k);
        stopped_ = !joined_;
        return;
      }
    }
  }
  Advance();
  if (in_ >= size_ || keptSize_ >= capacity_ ||
      (source_[in_] != QLatin1Char('!') && source_[in_] != QLatin1Char('-'))) {
    return;
  }
  // source_[in_] is a "!" or a "-", the character at position keptSize_: OpensAt(keptSize_ - 1)
  // and ClosesAt(keptSize_), with the first comparisons done cheaply.
  const QChar second = in_ + 1 < size_ ? source_[in_ + 1] : QChar();
  if (source_[in_] == QLatin1Char('!')) {
    if (second == QLatin1Char('-') && OpensAt(keptSize_ - 1)) {
      joined_ = Remove(keptSize_ - 1);
      stopped_ = !joined_;
      return;
    }
  } else if (second == QLatin1Char('-') && ClosesAt(keptSize_)) {
    stopped_ = true;
    return;
  }
  out_[keptSize_++] = source_[in_++];
}

}  // namespace qt_util::internal::html
