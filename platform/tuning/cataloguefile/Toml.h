// toml++ as the catalogue reader uses it. Every source file gets it from here, so that all of them
// agree on how it is configured.
#ifndef KNOB_CATALOGUEFILE_TOML_H
#define KNOB_CATALOGUEFILE_TOML_H

// The library is compiled in: loading its shared object, and the C++ runtime that comes with it,
// would take longer than reading a catalogue does.
#define TOML_HEADER_ONLY 1
#define TOML_EXCEPTIONS 0
#define TOML_ENABLE_FORMATTERS 0
// A catalogue nests values five deep where everything is written inline. Every level of a document
// takes stack when it is destroyed, so a hostile file must not choose how many there are.
#define TOML_MAX_NESTED_VALUES 6

#include <toml++/toml.h>

#endif
