// Writes manifests.

#include "tools/corvo/trust/WriteManifest.h"

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <optional>

#include "tools/corvo/InputError.h"
#include "tools/corvo/PartFile.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/OrderedWork.h"
#include "tools/corvo/archive/Progress.h"
#include "tools/corvo/trust/Manifest.h"
#include "tools/corvo/trust/ManifestRun.h"

namespace corvo {
namespace {

// Where a manifest goes: a new file, complete or not at all, or standard output.
class Output {
 public:
  Output(const std::string& name, bool force) : m_name(name), m_force(force) {
    if (name == "-") {
      m_identity = StateOf(Descriptor(::dup(STDOUT_FILENO)));
      return;
    }
    m_part.emplace(NewFile(name, force));
    m_file.open(m_part->Path(), std::ios::binary);
    m_identity = StateOf(m_part->Path());
  }

  bool Is(const FileState& file) const { return m_identity && m_identity->IsFile(file); }

  void Write(const std::string& text) { Look(Stream() << text); }

  void Publish() {
    Look(Stream().flush());
    if (m_part) m_part->Publish(m_force);
  }

 private:
  std::ostream& Stream() { return m_part ? m_file : std::cout; }

  void Look(const std::ostream& stream) const {
    if (!stream) throw InputError(m_part ? m_name : "the output", "can't be written");
  }

  const std::string& m_name;
  const bool m_force;
  std::optional<PartFile> m_part;
  std::ofstream m_file;
  std::optional<FileState> m_identity;
};

struct Listing {
  ManifestEntry entry;
  std::string path;
  std::string refusal;  // why it can't be listed
  long long size = 0;
};

// A manifest's own digest, once it has been seen to be complete.
std::string DigestOfManifest(const std::string& path) {
  ReadManifest(path);
  std::string digest;
  std::string refusal;
  if (!DigestUnchanged(RecordingFile(path), digest, refusal))
    throw InputError(NameInLine(path), refusal);
  return digest;
}

class Run {
 public:
  explicit Run(const WriteManifestPlan& plan)
      : m_directory(plan.directory),
        m_previous(plan.previous.empty() ? "" : DigestOfManifest(plan.previous)),
        m_inputs(m_directory.Inputs()),
        m_progress(m_directory.Inputs()),
        m_output(plan.output, plan.force) {}

  void Do(unsigned jobs) {
    OrderedWork<Input, Listing> work;
    work.next = [this](Input& input) { return m_inputs.Next(input); };
    work.work = [this](const Input& input) { return List(input); };
    work.put = [this](const Listing& listing) { Put(listing); };
    work.tick = [this] { m_progress.Draw(); };
    work.mustStop = [] { return NotedSignal() != 0; };
    work.Run(jobs);
    m_progress.Erase();
    if (const int signal = NotedSignal(); signal != 0) {
      throw Interrupted(signal, "interrupted: the manifest is not complete");
    }
    Finish();
  }

 private:
  Listing List(const Input& input) const {
    Listing listing{{{}, m_directory.NameOf(input.name)}, input.name, input.refusal, 0};
    if (!listing.refusal.empty()) return listing;
    const RecordingFile file(input.name);
    if (file.State() && m_output.Is(*file.State())) {
      listing.refusal = "it is the manifest that is being made";
    } else if (DigestUnchanged(file, listing.entry.digest, listing.refusal)) {
      listing.size = file.State()->size;
    }
    return listing;
  }

  void Put(const Listing& listing) {
    if (listing.refusal.empty()) {
      m_progress.MakeRoom();
      m_output.Write(ManifestLine(listing.entry));
      ++m_files;
    } else {
      m_progress.Erase();
      std::cerr << "corvo: " << NameInLine(listing.path) << ": " << listing.refusal << '\n';
      ++m_refused;
    }
    m_progress.Add(listing.size, false);
    m_progress.Draw();
  }

  void Finish() {
    if (m_refused != 0) {
      throw InputError("the manifest is not complete: " + std::to_string(m_refused) +
                       (m_refused == 1 ? " file" : " files") + " can't be listed");
    }
    if (m_files == 0) throw InputError("nothing to list");
    m_output.Write(ManifestTrailer(m_files, m_previous));
    m_output.Publish();
  }

  const ListedDirectory m_directory;
  const std::string m_previous;
  Inputs m_inputs;
  Progress m_progress;
  Output m_output;
  unsigned long long m_files = 0;
  unsigned long long m_refused = 0;
};

}  // namespace

Outcome WriteManifest(const WriteManifestPlan& plan) {
  NoteInterruptions();
  Run(plan).Do(plan.jobs);
  return Outcome::kFine;
}

}  // namespace corvo
