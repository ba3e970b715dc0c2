#ifndef ATTALVEN_MAIL_COMPOSE_BOUNDARY_H
#define ATTALVEN_MAIL_COMPOSE_BOUNDARY_H

// Boundaries of a message that is being composed. Draws depend on the clock alone: within one
// second they repeat, and whoever sends a mail that is answered or forwarded can foresee them. A
// boundary is therefore drawn again while it stands in the content that it has to separate, or is
// in use around it. Content that holds many of the draws in advance gets one that nobody can
// foresee.

#include "mail/parse/record.h"

namespace attalven {

/// A boundary in use, and those around it.
struct Boundaries {
    string_view text;
    const Boundaries* outer = nullptr;
    int depth = 1;
};

/// Goes on in the random sequence of the last mailGenBoundary(): 24 characters that differ from the
/// last ones, in the same static text.
char* redrawBoundary();
/// The same from the unpredictable generator.
char* drawSecretBoundary();

/// A new boundary for `parts`, of whose texts those in encoding kRaw are written as they stand.
Text newBoundary(const MailBody* parts, int bodyEncoding, const Boundaries* around);

}  // namespace attalven

#endif
