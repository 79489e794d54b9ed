#pragma once

// QTStringUtils::HtmlEncode as it was first written: one replacement after the other over the
// whole text. The test compares the one-pass version with it on generated text, and the
// benchmark measures against it.

#include <QString>

namespace test_support {

inline void StepwiseHtmlEncode(QString& text) {
  text.replace(QLatin1Char('&'), QLatin1String("&amp;"));
  text.replace(QLatin1Char(' '), QLatin1String("&nbsp;"));
  text.replace(QLatin1Char('<'), QLatin1String("&lt;"));
  text.replace(QLatin1Char('>'), QLatin1String("&gt;"));
  text.replace(QLatin1Char('"'), QLatin1String("&quot;"));
  text.replace(QLatin1Char('\''), QLatin1String("&#39;"));
  text.replace(QLatin1String("\r\n"), QLatin1String("\r"));
  text.replace(QLatin1Char('\r'), QLatin1String("<br>"));
  text.replace(QLatin1Char('\n'), QLatin1String("<br>"));
  text.replace(QLatin1Char('\v'), QLatin1String("<br>"));
}

}  // namespace test_support
