// Export marker of libvsupt.
//
// The library is built with hidden visibility; every class and function that
// belongs to its public interface carries VSUPT_API so that it appears in the
// dynamic symbol table. Programs that include the headers see the same
// attribute, which keeps type information of exported classes (exceptions
// above all) shared between the library and its callers.
#ifndef VSUPT_VSUPTEXPORT_H
#define VSUPT_VSUPTEXPORT_H

#define VSUPT_API __attribute__((visibility("default")))

#endif
