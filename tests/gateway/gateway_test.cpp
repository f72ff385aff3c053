// tests/gateway/gateway_test.cpp - the gateway in a host of our own: what it refuses and in which order, what it cuts,
// and that it gives what the library gives.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "gateway/host.h"
#include "support/build.h"
#include "support/faults.h"

#include <cmath>
#include <ctime>
#include <limits>

extern "C" void mexfilerequiredapiversion(unsigned int *release, unsigned int *api);

// The library seeds its random sequence from the clock; here it stands still.
extern "C" std::time_t __wrap_time(std::time_t *);
extern "C" std::time_t __wrap_time(std::time_t *)
{
  return 1234567;
}

static const char NOT_SQUARE[] = "Second parameter must be a symmetric sparse matrix";
static const char TOO_FEW_PARTS[] = "nparts must be at least 2";

static const Instance &Hypergraph()
{
  static const Instance instance = [] {
    TestRandom random = {11};
    // A column names a row once.
    return RandomInstance(&random, 300, 300, ODD_TINY | ODD_DUPLICATES | ODD_LARGE | ODD_ISLANDS);
  }();
  return instance;
}

static mxArray MatrixOf(const Instance &instance)
{
  std::vector<std::vector<mwIndex>> columns;

  for (const std::vector<int> &net : instance.nets)
    columns.emplace_back(net.begin(), net.end());
  return Sparse(static_cast<std::size_t>(instance.ncells), columns);
}

static mxArray Square(std::size_t n)
{
  return Sparse(n, std::vector<std::vector<mwIndex>>(n));
}

static std::string ErrorOf(int nlhs, const std::vector<mxArray> &inputs)
{
  const HostCall call = CallGateway(nlhs, inputs);

  EXPECT_EQ(call.identifier, "");
  EXPECT_NE(call.returned, !call.message.empty());
  return call.message;
}

// Every step is reached with all later ones wrong.
TEST(gateway, refuses_in_order)
{
  const mxArray number = Number(3), name = Text("PartKway"), wrong = Text("PartOther"), square = Square(3);

  EXPECT_EQ(ErrorOf(3, {number, number, number}), "Wrong # of arguments");
  EXPECT_EQ(ErrorOf(0, {}), "Wrong # of arguments");
  EXPECT_EQ(ErrorOf(0, {number}), "Wrong # of arguments");
  EXPECT_EQ(ErrorOf(0, {number, number, number, number, number}), "Wrong # of arguments");
  EXPECT_EQ(ErrorOf(2, {number, number}), "First parameter must be a string");
  EXPECT_EQ(ErrorOf(2, {wrong, Full(3, 3)}), NOT_SQUARE);
  EXPECT_EQ(ErrorOf(2, {wrong, Sparse(3, {{}, {}, {}, {}})}), NOT_SQUARE);
  for (const std::vector<mxArray> &inputs :
       {std::vector<mxArray>{wrong, square}, {wrong, square, Number(1)}, {wrong, square, number, number}}) {
    const HostCall call = CallGateway(1, inputs);
    EXPECT_EQ(call.identifier, "zavikmex:invalidValue");
    EXPECT_EQ(call.message, "Unknown zavikmex function PartOther");
  }
  EXPECT_EQ(ErrorOf(2, {name, square}), "Third parameter needed: nparts");
  EXPECT_EQ(ErrorOf(2, {name, square, Number(1), number}), "Wrong number of input parameters");
  EXPECT_EQ(ErrorOf(2, {name, square, Number(1)}), TOO_FEW_PARTS);
}

TEST(gateway, narrows_to_32_bits)
{
  // As an int, the number of columns is 3; as an int, it is negative and differs from the rows.
  mxArray wide = Sparse(3, {{0, 1}, {1, 2}, {0, 2}});
  wide.columns = (std::size_t{1} << 32) + 3;
  mxArray huge = Square(3);
  huge.rows = huge.columns = std::size_t{1} << 31;
  EXPECT_EQ(CallGateway(1, {Text("PartRecursive"), wide, Number(2)}).outputs[0]->columns, 3u);
  EXPECT_EQ(ErrorOf(1, {Text("PartRecursive"), huge, Number(2)}), NOT_SQUARE);

  // Rows are those that their lower halves say.
  mxArray matrix = MatrixOf(Hypergraph());
  const HostCall plain = CallGateway(2, {Text("PartRecursive"), matrix, Number(2)});
  for (mwIndex &row : matrix.entries)
    row += mwIndex{1} << 32;
  const HostCall carried = CallGateway(2, {Text("PartRecursive"), matrix, Number(2)});
  EXPECT_EQ(carried.outputs[0]->values, plain.outputs[0]->values);
  EXPECT_EQ(carried.outputs[1]->values, plain.outputs[1]->values);
}

TEST(gateway, truncates_nparts)
{
  const mxArray name = Text("PartRecursive"), matrix = MatrixOf(Hypergraph());

  for (double refused : {1.5, 1.999999999, 0.0, -3.0, std::nan(""), 2147483648.0, 4294967298.0, -1e300,
                         std::numeric_limits<double>::infinity()})
    EXPECT_EQ(ErrorOf(1, {name, matrix, Number(refused)}), TOO_FEW_PARTS) << refused;
  const HostCall call = CallGateway(1, {name, matrix, Number(2.9)});
  for (double part : call.outputs[0]->values)
    EXPECT_TRUE(part == 0.0 || part == 1.0);
}

TEST(gateway, reads_24_characters_of_the_name_in_any_case)
{
  const mxArray square = Square(3);

  EXPECT_EQ(CallGateway(0, {Text("PartRecursivePartRecursivePart"), square}).message,
            "Unknown zavikmex function PartRecursivePartRecursi");
  EXPECT_EQ(CallGateway(0, {Text("%d%s"), square}).message, "Unknown zavikmex function %d%s");
  EXPECT_EQ(CallGateway(0, {Text(""), square}).message, "Unknown zavikmex function ");
  EXPECT_EQ(CallGateway(0, {Text("PartKway "), square}).message, "Unknown zavikmex function PartKway ");
  for (const char *name : {"partrecursive", "PARTRECURSIVE", "partkway", "PARTKWAY"})
    EXPECT_TRUE(CallGateway(0, {Text(name), square, Number(2)}).returned) << name;
}

TEST(gateway, gives_what_the_library_gives)
{
  const Instance &instance = Hypergraph();
  const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  const int options[9] = {0};
  const int n = instance.ncells, nnets = static_cast<int>(instance.nets.size());

  for (const bool kway : {false, true}) {
    for (int nparts : {2, 7}) {
      std::vector<int> part(static_cast<std::size_t>(n));
      int cut = -1;
      (kway ? KAPRIS_PartKway : KAPRIS_PartRecursive)(n, nnets, nullptr, netptr.data(), netind.data(),
                                                      nullptr, nparts, kway ? 6 : 1, options, part.data(),
                                                      &cut);
      ASSERT_EQ(cut, CutOf(instance, part));

      for (int nlhs : {0, 1, 2}) {
        const HostCall call = CallGateway(
            nlhs, {Text(kway ? "PartKway" : "PartRecursive"), MatrixOf(instance), Number(nparts)});
        ASSERT_TRUE(call.returned);
        ASSERT_EQ(call.arrays.size(), static_cast<std::size_t>(nlhs));
        EXPECT_EQ(call.outputs[0] != nullptr, nlhs >= 1);
        EXPECT_EQ(call.outputs[1] != nullptr, nlhs >= 2);
        if (nlhs >= 1) {
          EXPECT_EQ(call.outputs[0]->rows, 1u);
          EXPECT_EQ(call.outputs[0]->values, std::vector<double>(part.begin(), part.end()));
        }
        if (nlhs >= 2) {
          EXPECT_EQ(call.outputs[1]->values, std::vector<double>{static_cast<double>(cut)});
        }
      }
    }
  }
}

TEST(gateway, accepts_no_cells_and_empty_columns)
{
  const HostCall none = CallGateway(2, {Text("PartKway"), Square(0), Number(2)});
  ASSERT_TRUE(none.returned);
  EXPECT_EQ(none.outputs[0]->columns, 0u);
  EXPECT_EQ(none.outputs[1]->values, std::vector<double>{0.0});
  EXPECT_EQ(CallGateway(2, {Text("PartRecursive"), Square(9), Number(3)}).outputs[1]->values,
            std::vector<double>{0.0});
}

// What the library refuses is no error of the host: the process ends, and says why.
TEST(gateway, ends_with_the_library)
{
  EXPECT_EXIT(
      {
        PopErrorHandler();
        CallGateway(1, {Text("PartRecursive"), Sparse(2, {{0}, {7}}), Number(2)});
      },
      testing::ExitedWithCode(0), "netind.1. is 7, but a pin should be at least 0 and below ncells");
}

// Memory of the library ends the process with its message, which is thrown here; that of the host is an error of the
// host. The next call is right.
TEST(gateway, any_allocation_may_fail)
{
  const std::vector<mxArray> inputs = {
      Text("PartRecursive"), Sparse(6, {{0, 1}, {1, 2}, {0, 2}, {3, 4, 5}, {4, 5}, {2, 3}}), Number(2)};
  const HostCall usual = CallGateway(2, inputs);
  HostCall call;
  const auto attempt = [&] {
    FatalError error = {FATAL_INPUT, ""};
    try {
      call = CallGateway(2, inputs);
    } catch (const FatalError &caught) {
      error = caught;
    } catch (const std::bad_alloc &) { // records of this host, and internal checks
      error = {FATAL_MEMORY, "Memory allocation failed for others"};
    }
    return error;
  };
  long nhost = 0;

  const long ncalls = FailEach(attempt, [&](const FatalError &error, long n) {
    ReleaseLedger(0);
    if (error.kind == FATAL_MEMORY) {
      EXPECT_EQ(std::string(error.message).find("Memory allocation failed for "), 0u) << error.message;
    } else {
      nhost++;
      EXPECT_EQ(call.message, "Out of memory.") << "allocation " << n;
      EXPECT_FALSE(call.returned);
    }
    const HostCall next = CallGateway(2, inputs);
    EXPECT_EQ(next.outputs[0]->values, usual.outputs[0]->values);
    EXPECT_EQ(next.outputs[1]->values, usual.outputs[1]->values);
  });
  std::printf("%ld calls met a failing allocation, %ld in the memory of the host\n", ncalls, nhost);
  EXPECT_GT(nhost, 5);
  EXPECT_GT(ncalls, nhost + 50);
}

TEST(gateway, names_its_interface)
{
  unsigned int release = 0, api = 0;

  mexfilerequiredapiversion(&release, &api);
  EXPECT_EQ(release, 131467u);
  EXPECT_EQ(api, 0x7300000u);
}
