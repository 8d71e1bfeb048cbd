// Registers every row and runs the benchmarks that the command line selects.
#include <benchmark/benchmark.h>

#include "support/families.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    bench::addConvert();
    bench::addErrorChain();
    bench::addDigitCount();
    bench::addDayNumbers();
    bench::addNumericText();
    bench::addTranspose();
    bench::addPermutation();
    bench::addReverse();
    bench::addCase();
    bench::addCompare();
    bench::addElements();
    bench::addTrim();
    bench::addUnicode();
    bench::addByteOrder();
    bench::addBitFlip();
    bench::addQuicksort();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
