#pragma once

#include "Qov/Export.h"

/// Merges that take an argument vector as a main function does, so that another program can run
/// them in its own process.
///
/// `argv[0]` is the caller's name and is not looked at. The vector and its strings stay the
/// caller's; nothing is kept of them. Each function returns 0, or 2 after it wrote the text of an
/// error and a newline to standard error; an output that was begun is then left as it is. No
/// file, whatever it holds, and no argument, null pointers and negative counts included, stops
/// the process.
///
/// The inputs are the arguments 1 to `argc` - 2 and the output is the last one; argument 1 is an
/// input in any case, so that with `argc` 2 it would be the output as well, which is refused like
/// every output that is one of the inputs (the same device and inode). The output is written once
/// all inputs were read; arrays stream through.
///
/// None of them sets up a log: see Qov/Log/Manager.h. They share the process's log and some
/// state of the readers, so only one may run at a time.
namespace QovRyx {

/// The nodes of all inputs beneath a new root group "Merge", as merge_as_datasets does it.
QOV_EXPORT int cae_merge_in_tree(int argc, const char* const* argv);

/// The same.
QOV_EXPORT int cad_merge(int argc, const char* const* argv);

/// Argument 1, argument 2 times over, beneath a new root group "Merge"; the output is argument 3.
///
/// Argument 2 is a decimal number; what is no number counts as 0, and 0 counts as 1. A negative
/// number is taken for the huge unsigned 64-bit one of the same bits: the file is merged again
/// until an error stops that, which comes when the tree has no ids left for its nodes
/// (Qov::Util::Exception::ErrorType::ModelError) or the process has no memory left.
QOV_EXPORT int merge_n(int argc, const char* const* argv);

/// The first input with results of the further ones: each of their geometries gives those of its
/// results whose kind lies between 12 and 28 and whose names do not begin with "Node Ids" to the
/// first input's geometry of the same id, behind the results that are there.
///
/// Names stay as they are, so two results may bear the same one. So do links: a result that is
/// linked names a position of the first input's geometry, whatever stands there. An id that the
/// first input lacks is an error, and so is one that is no geometry there.
QOV_EXPORT int cae_merge(int argc, const char* const* argv);

/// The first input with the cut sections of the further ones: each of their shapes whose parent
/// bears an id that in the first input is a node named "Cut-Sections" goes, with its geometry,
/// beneath the first input's first group of that name (Tree::AddShape). A parent's id that the
/// first input lacks, or that carries no node there, is an error.
QOV_EXPORT int cae_merge_cs(int argc, const char* const* argv);

}  // namespace QovRyx
