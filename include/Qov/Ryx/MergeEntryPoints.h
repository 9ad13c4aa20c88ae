#pragma once

#include "Qov/Export.h"

/// Merges that take an argument vector as a main function does, so that another program can run
/// them in its own process.
///
/// `argv[0]`, the name of the program, is ignored. The functions keep no pointers to the arguments.
/// Each function returns 0, or 2 after it wrote the text of an error and a newline to standard
/// error; an incomplete output is not deleted. No content of a file and no argument stops the
/// process, not even a null pointer or a negative count.
///
/// The inputs are the arguments 1 to `argc` - 2, and the output is the last argument. Argument 1 is
/// always an input; with `argc` 2 it is also the output, which is an error. An output that is the
/// same file as an input (the same device and inode) is always an error. The output is written
/// after the descriptors of all inputs were read; arrays are copied piece by piece.
///
/// The functions do not set up a log: see Qov/Log/Manager.h. They share the log and some state of
/// the readers with the process, so only one may run at a time.
namespace QovRyx {

/// Puts the nodes of all inputs below a new root group "Merge", like merge_as_datasets.
QOV_EXPORT int cae_merge_in_tree(int argc, const char* const* argv);

/// Does the same as cae_merge_in_tree.
QOV_EXPORT int cad_merge(int argc, const char* const* argv);

/// Puts the nodes of argument 1 below a new root group "Merge", as often as argument 2 says. The
/// output is argument 3.
///
/// Argument 2 is a decimal number. A text that is not a number counts as 0, and 0 counts as 1. A
/// negative number is converted to an unsigned 64-bit number. The file is then merged until the
/// tree has no ids left (Qov::Util::Exception::ErrorType::ModelError) or the process has no memory
/// left.
QOV_EXPORT int merge_n(int argc, const char* const* argv);

/// Appends results of the further inputs to the first input. Takes the results of each geometry
/// whose kinds are 12 to 28 and whose names do not begin with "Node Ids", and appends them to the
/// geometry of the same id in the first input.
///
/// Names are not changed, so two results can have the same name. Links are not changed either: a
/// linked result shares the values of whatever result is at that position in the first input. It is
/// an error if the first input has no node of that id or if that node is not a geometry.
QOV_EXPORT int cae_merge(int argc, const char* const* argv);

/// Moves cut sections of the further inputs to the first input. A shape is moved, with its
/// geometry, if the node of its parent's id in the first input has the name "Cut-Sections". It
/// becomes a child of the first group of that name in the first input (Tree::AddShape). It is an
/// error if the first input has no entry of the parent's id or if that entry has no content.
QOV_EXPORT int cae_merge_cs(int argc, const char* const* argv);

}  // namespace QovRyx
