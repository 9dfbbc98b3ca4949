#pragma once

// Interfaces cross library borders: their vtables and type information live once, in libvorlin, so that
// dynamic_cast and the registry see one type whichever library made the object.
#define VORLIN_API __attribute__((visibility("default")))
