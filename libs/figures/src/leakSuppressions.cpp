// The font library refers to parts of what it caches by their distance from each other. A leak checker, which
// looks for addresses, takes these parts for lost.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libfontconfig\n";
}

/// Nor are they told of: standard error is the program's.
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
