#pragma once

#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/Tree.h"

/// The merges. Each loads its inputs, joins them and writes one new file; the arrays stream
/// through. Each returns 0, or 2 after it wrote the text of an error and a newline to standard
/// error; an output that was begun is then left as it is. An output that is one of the inputs
/// (the same device and inode) is refused before anything is read.
namespace QovRyx {

/// One model with the tree of the first file and the results of all of them. Result names are
/// made distinct by file (InstanceNames.h). `useSuffix` puts the file's number into every name;
/// with `autoRename` it goes only into names that have an instance part, and only those results
/// are taken from the further files. `appendFlag` has no effect.
QOV_EXPORT int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                                  bool appendFlag, bool useSuffix, bool autoRename);

/// One model with the nodes of all files beneath a new root group named "Merge". Views, sequencer
/// and history are those of the first file.
QOV_EXPORT int merge_as_datasets(const std::vector<std::string>& files, const std::string& output);

/// The model with the view-point paths of the view-point files added; the current view and the
/// sequencer become those of the last one. A view-point file of version "0.1" contributes nothing.
QOV_EXPORT int merge_viewpoints_with_ryx(const std::string& model,
                                         const std::vector<std::string>& viewPointFiles,
                                         const std::string& output);

/// Makes the checks of a run that merges the models, if there are several, and then adds the views,
/// before anything is read or written: the output must not be one of the inputs or be written by
/// another run, SOURCE_DATE_EPOCH must be usable, and the view-point files must be containers whose
/// views can be read. Returns 0, or 2 after it wrote the error as the merges do.
QOV_EXPORT int check_before_merge(const std::vector<std::string>& models,
                                  const std::vector<std::string>& viewPointFiles,
                                  const std::string& output);

/// Appends all results of `from` to the geometries of the same ids in `into`. An id that `into`
/// lacks raises ElementNotFound; one that is not a geometry there is passed over. Links still lead
/// to the same results (they are changed in `from` as well). A result whose link names one of a
/// geometry that is passed over takes its values along, with the fields that describe them
/// (VarStruct::TakeValuesOf). A dangling link stays as it is. `appendFlag` has no effect.
QOV_EXPORT void AppendResults(Tree& from, Tree& into, bool appendFlag);

/// The same for results whose names have an instance part only. A link to a result of the same
/// geometry becomes one to its own new position, so the result loses its values. A result that is
/// linked to another geometry takes the values along, as in AppendResults.
QOV_EXPORT void AppendOtherInstanceResults(Tree& from, Tree& into);

}  // namespace QovRyx
