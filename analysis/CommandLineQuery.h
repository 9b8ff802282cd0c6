#pragma once

// norvella --analyse TEXT and norvella --conjugate VERB: answers on stdout from the
// master database, read-only, with no window and without the user's data.

namespace norvella {

// The exit status of the query argv asks for (0 answered, 1 unknown form or verb
// or no database, 2 misuse), or -1 when it asks for neither.
int runCommandLineQuery(int argc, char **argv);

} // namespace norvella
