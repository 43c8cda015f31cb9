// The command line of the commands for those who take nobody's word.

#include "tools/corvo/trust/TrustCommands.h"

#include <memory>

#include "tools/corvo/trust/Recipe.h"

namespace corvo {

void AddTrust(CLI::App& app, std::function<Outcome()>& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App& command =
      *app.add_subcommand("recipe", "Print the plain commands that recompute a seal");
  command.add_option("file", *name, "A sealed recording")->required()->type_name("FILE");
  command.footer("\nRun them as corvo recipe FILE | sh");
  command.callback([name, &run] { run = [name] { return PrintRecipe(*name); }; });
}

}  // namespace corvo
