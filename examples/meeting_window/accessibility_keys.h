#pragma once

// Accessibility keys for the client's UI automation: every button of the meeting window and of
// its panels is found by a key derived from its object name.

class QWidget;

namespace meeting {

/// Gives `root`'s buttons (and `root` itself when it is one) their accessibility keys, from
/// their object names: name "atg__<object name>__name", description "atg__<object name>".
void SetButtonKeys(QWidget* root);

/// Whether `widget` carries the keys of its object name.
bool HasKeys(const QWidget* widget);

}  // namespace meeting
