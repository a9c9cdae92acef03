// Takes the bytes that libFuzzer generates as a table, reads it and calculates a formula for every
// row, in batches and row by row. The formula follows from the first byte.

#include "calc/batch_calculator.h"
#include "calc/complaint.h"
#include "calc/csv_reader.h"
#include "calc/files.h"
#include "calc/row_calculator.h"
#include "calc/table.h"
#include "calc/table_binding.h"
#include "sandbox.h"

#include <array>
#include <bit>
#include <cmath>
#include <fcntl.h>
#include <optional>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>
#include <vector>

using namespace varo;
using namespace varo::calc;
using fuzz::require;

namespace {

using Cells = std::vector<std::vector<std::string>>;

/// Of numbers, of texts, with failures, with many variables, with none.
constexpr std::array kFormulas{"F*L/4",       "a+b*c-d/e",         "1/a",
                               "sqrt(a)",     "StrLen(s)",         "StrSub(s,1,n,0)",
                               "If(a>b,a,b)", "S2R(s)+R2S(a,2)=s", "1+1"};

const fuzz::Sandbox& sandbox() {
    static const fuzz::Sandbox instance;
    return instance;
}

/// While it lives, what is written to the standard output goes into a file of the sandbox, and what
/// is written to the standard error nowhere.
class Outputs {
  public:
    Outputs() {
        redirect(open(sandbox().path("output.csv").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600),
                 STDOUT_FILENO);
        redirect(open("/dev/null", O_WRONLY), STDERR_FILENO);
    }
    ~Outputs() {
        redirect(dup(kOutput), STDOUT_FILENO);
        redirect(dup(kError), STDERR_FILENO);
    }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// Keeps the process's own outputs; what the sanitizers say always goes there.
    static void keep() {
        require(dup2(STDOUT_FILENO, kOutput) == kOutput && dup2(STDERR_FILENO, kError) == kError,
                "the outputs are kept");
        __sanitizer_set_report_fd(reinterpret_cast<void*>(std::intptr_t{kError}));
    }

  private:
    static constexpr int kOutput = 100;
    static constexpr int kError = 101;

    static void redirect(int source, int target) {
        dup2(source, target);
        close(source);
    }
};

/// All rows of a table; nothing when it is refused.
std::optional<Cells> cellsOf(const char* name) {
    InputFile file(sandbox().path(name));
    CsvReader reader(file);
    Cells cells;
    try {
        while (reader.next()) {
            for (std::size_t row = 0; row < reader.rows().size(); ++row) {
                require(reader.rows().cellCount(row) > 0, "a row has a cell");
                cells.emplace_back();
                for (std::size_t cell = 0; cell < reader.rows().cellCount(row); ++cell) {
                    cells.back().emplace_back(reader.rows().cell(row, cell));
                }
            }
        }
    } catch (const CalcError& error) {
        require(*error.what() != '\0', "a refused table has a reason");
        return {};
    }
    return cells;
}

/// The calculation in batches next to that row by row.
void checkBatches(const engine::Formula& formula, const GivenValues& given) {
    InputFile file(sandbox().path("table.csv"));
    CsvReader reader(file);
    if (!BatchCalculator::serves(formula) || !reader.next()) {
        return;
    }
    const TableBinding binding = bindTable(formula, given, reader.rows());
    BatchCalculator batch(formula, binding);
    RowCalculator single(formula, binding);
    const std::span<const double> results = batch.calculate(reader.rows(), 1);
    require(results.size() + 1 == reader.rows().size(), "every row has a place in its batch");
    for (std::size_t row = 1; row < reader.rows().size(); ++row) {
        engine::Value result;
        const bool works = single.calculate(reader.rows(), row, result);
        require(works || !single.reason().empty(), "a row without a result has a reason");
        require(works ? std::bit_cast<std::uint64_t>(results[row - 1]) ==
                            std::bit_cast<std::uint64_t>(std::get<double>(result))
                      : std::isnan(results[row - 1]),
                "a row gives in a batch what it gives alone");
    }
}

std::string cellAt(const Cells& cells, std::size_t row, std::size_t column) {
    return column < cells[row].size() ? cells[row][column] : std::string();
}

/// The written table next to the one that was read. Blanks around a cell are no part of it, so that
/// it reads back without.
void checkOutput(const Cells& input, std::uint64_t failures) {
    const std::optional<Cells> output = cellsOf("output.csv");
    require(output && output->size() == input.size(), "every row is written");
    const std::size_t width = input[0].size();
    std::uint64_t empty = 0;
    for (std::size_t row = 0; row < input.size(); ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            require(cellAt(*output, row, column) == cellAt(input, row, column),
                    "the cells of the table stay");
        }
        empty += cellAt(*output, row, width).empty() ? 1 : 0;
    }
    require(cellAt(*output, 0, width) == "Result", "the column of the results has a name");
    require(empty >= failures, "a row without a result has none");
}

void check(const engine::Formula& formula) {
    const std::optional<Cells> input = cellsOf("table.csv");
    CalcOptions options;
    options.table = sandbox().path("table.csv");
    std::optional<std::uint64_t> failures;
    try {
        const Outputs outputs;
        failures = calculateTable(formula, options);
    } catch (const CalcError& error) {
        require(*error.what() != '\0', "a refused table has a reason");
    }
    require(input || !failures, "a table that is not read has no results");
    if (failures) {
        require(!input->empty() && *failures < input->size(), "failures are among the rows");
        checkBatches(formula, readAssignments(formula, {}));
        checkOutput(*input, *failures);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Outputs::keep();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    sandbox().clear();
    sandbox().write("table.csv", fuzz::asText(bytes + 1, size - 1));
    check(engine::Formula::parse(kFormulas[bytes[0] % kFormulas.size()]));
    require(sandbox().files().count("table.csv") == 1 && sandbox().files().size() <= 2,
            "no file appears");
    sandbox().requireNothingOutside();
    return 0;
}
