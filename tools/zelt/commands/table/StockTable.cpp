#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

namespace {

void DescribeFaults(Command& command, StockServeOptions& options)
{
    command.Option("--slow MILLISECONDS", options.delay, "Wait so long before each answer");
    command.Option("--fail STATUS", options.status, "Answer with this HTTP status");
    command.Option("--retry-after SECONDS", options.retryAfter, "Say with --fail when to ask again");
    command.Option("--redirect URL", options.redirect, "Redirect to this host (loop: to the same address again)");
    command.Option("--lie LENGTH", options.lie, "Announce a longer or shorter length than the answer has").choices = {
        "longer", "shorter"};
    command.Option("--cut", options.cut, "Close the connection in the middle of each answer");
    command.Option("--stall", options.stall, "Send nothing more from the middle of each answer on");
    command.Option("--rows COUNT", options.rows, "Rows of a page at most, fewer than are asked for; 0: none");
    command.Option("--only WHAT", options.only, "Do so to searches, or to files, only").choices = {"searches", "files"};
    command.Option("--times COUNT", options.times, "Do so to the first requests, and answer all later ones well");
}

} // namespace

std::vector<Command> StockCommands()
{
    return {
        Define("stock search", "List the templates of a stock service that all terms find", &RunStockSearch,
               [](Command& command, StockSearchOptions& options) {
                   command.Argument("URL", options.url, "Base URL of the service");
                   command.Argument("[TERM...]", options.terms, "Words to find; without any, all templates");
                   command.Option("--filter PRICE", options.filter, "all, premium or free (default: all)").choices = {
                       "all", "premium", "free"};
                   command.Option("--json", options.json, "One JSON object for each template, on one line");
                   command.Example("stock search http://127.0.0.1:8080 title", "what a word finds");
                   command.Note("ZELT_STOCK_TOKEN and ZELT_STOCK_KEY in the environment are the bearer token and the "
                                "API key that the service is told.");
               }),
        Define("stock get", "Get the description, the picture and the video of a stock template", &RunStockGet,
               [](Command& command, StockGetOptions& options) {
                   command.Argument("URL", options.url, "Base URL of the service");
                   command.Argument("ID", options.id, "What search shows as the template's identifier");
                   command.Option("-o, --output DIR", options.output, "Folder for the files; made when missing")
                       .isRequired = true;
                   command.Example("stock get http://127.0.0.1:8080 lower-third -o previews", "one template's files");
               }),
        Define("stock serve", "Serve the packages in a folder as a stock service, for development", &RunStockServe,
               [](Command& command, StockServeOptions& options) {
                   command.Argument("FOLDER", options.folder, "Its packages, and those below, are the templates");
                   command.Option("--port PORT", options.port, "0: one that is free (default: 8080)");
                   command.Option("--address ADDRESS", options.address,
                                  "Address of this machine to listen at (default: 127.0.0.1, this machine only)");
                   command.Option("--copies COUNT", options.copies, "Templates for each package (default: 1)");
                   command.Option("--token TOKEN", options.token, "Bearer token that searches must carry");
                   DescribeFaults(command, options);
                   command.Example("stock serve ~/Templates --port 0", "print the address, then serve until Ctrl-C");
                   command.Example("stock serve ~/Templates --only files --cut", "break all downloads off");
                   command.Note("Templates below a folder named premium cost money. Each sub-folder is a category, "
                                "numbered from 1 in the order of names. The folder is read once.");
               }),
    };
}

} // namespace zelt
