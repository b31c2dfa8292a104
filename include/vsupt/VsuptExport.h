/// @file
/// Export marker of libvsupt.
///
/// The library is built with hidden visibility; every class and function that
/// belongs to its public interface carries VSUPT_API so that it appears in the
/// dynamic symbol table. Programs that include the headers see the same
/// attribute, which keeps type information of exported classes (exceptions
/// above all) shared between the library and its callers.
#ifndef VSUPT_VSUPTEXPORT_H
#define VSUPT_VSUPTEXPORT_H

/// Marks a class or function as part of the library's exported interface.
#define VSUPT_API __attribute__((visibility("default")))

/// @namespace VornSupport
/// Everything the library offers, but for the start-up frame (Module,
/// ModuleData, ModuleDataControl), the lock implementation classes, the
/// regular expression implementation, the tokenizer class and the
/// case-insensitive character traits, which stand in the global namespace.

#endif
