#pragma once

#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/InstanceNaming.h"

/// The merges. Each loads the descriptors of its inputs and writes one new file; arrays are copied
/// piece by piece. Each returns 0, or 2 after it wrote the text of an error and a newline to
/// standard error; an incomplete output is not deleted. It is an error if the output is the same
/// file as an input (the same device and inode); nothing is read then.
namespace QovRyx {

class Tree;

/// Merges the models of several files into one model with the tree of the first file and the
/// results of all files. `naming` says how results are renamed and which ones are taken
/// (InstanceNaming.h).
QOV_EXPORT int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                                  InstanceNaming naming);

/// Does the same with the naming that the flags describe: `autoRename` chooses one of the automatic
/// namings, `useSuffix` one with the suffix of the file. `appendFlag` has no effect.
QOV_EXPORT int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                                  bool appendFlag, bool useSuffix, bool autoRename);

/// Merges the models of several files into one model with the nodes of all files below a new root
/// group named "Merge". Takes views, sequencer and history from the first file.
QOV_EXPORT int merge_as_datasets(const std::vector<std::string>& files, const std::string& output);

/// Adds the view-point paths of the view-point files to the model. Takes the current view and the
/// sequencer from the last file that has views. Takes nothing from a file of version "0.1".
QOV_EXPORT int merge_viewpoints_with_ryx(const std::string& model,
                                         const std::vector<std::string>& viewPointFiles,
                                         const std::string& output);

/// Makes the checks that a run needs before it reads or writes models: the output must not be one
/// of the inputs and must not be written by another run, SOURCE_DATE_EPOCH must be usable, and the
/// view-point files must be containers whose views can be read. Returns 0, or 2 after it wrote the
/// error like the merges.
QOV_EXPORT int check_before_merge(const std::vector<std::string>& models,
                                  const std::vector<std::string>& viewPointFiles,
                                  const std::string& output);

/// Appends all results of `from` to the geometries of the same ids in `into`. Raises
/// ElementNotFound for an id that `into` does not have. Skips a geometry whose node in `into` is
/// not a geometry. Links are moved with their results, in `from` too. A link to a result of a
/// skipped geometry is replaced by the values (VarStruct::TakeValuesOf). A dangling link stays as
/// it is. `appendFlag` has no effect.
QOV_EXPORT void AppendResults(Tree& from, Tree& into, bool appendFlag);

/// Does the same for results whose names have an instance part, and drops the others. A link within
/// a geometry becomes a link to itself, so that the result loses its values. A link to another
/// geometry is replaced by the values.
QOV_EXPORT void AppendOtherInstanceResults(Tree& from, Tree& into);

}  // namespace QovRyx
