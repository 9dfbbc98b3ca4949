#pragma once

// Exports a class or function from libvorlin. Objects of these classes cross library borders, so their
// virtual tables and type information must exist once, in libvorlin. dynamic_cast and the registry then see
// one type, whichever library made the object.
#define VORLIN_API __attribute__((visibility("default")))
