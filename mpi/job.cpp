// mpi/job.cpp - what all ranks work on, and what they tell of their starts.
// SPDX-License-Identifier: MIT

#include "job.h"

#include "bytes.h"

#include "solve/part_bytes.h"

#include <cstdio>

namespace kapris_mpi
{

// ----------------------------------------------------------------------------------------------------------
// Records; each lists its members once, for both directions.

template <class Visitor, class Record>
static void VisitOptions(Visitor &visit, Record &options)
{
  visit(options.scheme);
  visit(options.objective);
  visit(options.coarsening);
  visit(options.refinement);
  visit(options.vcycle);
  visit(options.runs);
  visit(options.reconst);
  visit(options.seed);
  visit(options.epsilon);
  visit(options.threads);
  visit(options.memory_limit);
  visit(options.log_level);
  visit(options.records);
  visit(options.min_epsilon);
  visit(options.allow_empty);
  visit(options.members);
  visit(options.combinations);
}

template <class Visitor, class Record>
static void Visit(Visitor &visit, Record &record)
{
  using Plain = std::remove_const_t<Record>;
  if constexpr (std::is_same_v<Plain, Work>) {
    visit(record.number);
    visit(record.threads);
    visit(record.seconds);
  } else if constexpr (std::is_same_v<Plain, Ready>) {
    visit(record.nthreads);
  } else if constexpr (std::is_same_v<Plain, Farewell>) {
    visit(record.together);
  } else if constexpr (std::is_same_v<Plain, Fault>) {
    visit(record.number);
    visit(record.status);
    visit(record.text);
  } else {
    static_assert(std::is_same_v<Plain, Finished>);
    visit(record.start);
    visit(record.seconds_phase);
    visit(record.peak_bytes);
    visit(record.trials);
    visit(record.levels);
    visit(record.bisections);
    visit(record.part);
  }
}

template <class Record>
std::string BytesOf(const Record &record)
{
  Packer packer;

  Visit(packer, record);
  return std::move(packer.bytes);
}

template <class Record>
Record RecordOf(const std::string &bytes)
{
  Unpacker unpacker(bytes);
  Record record;

  Visit(unpacker, record);
  return record;
}

std::string BytesOfVisitor(const Job &job, std::span<const int> part)
{
  Packer packer;

  packer(kapris_cli::BytesOfPart(part, job.targets.nparts));
  return std::move(packer.bytes);
}

std::vector<int> VisitorOf(const Job &job, const std::string &bytes)
{
  Unpacker unpacker(bytes);
  std::string part;

  unpacker(part);
  return kapris_cli::PartOfBytes(part, job.hypergraph.ncells, job.targets.nparts).value();
}

template std::string BytesOf(const Work &);
template std::string BytesOf(const Ready &);
template std::string BytesOf(const Farewell &);
template std::string BytesOf(const Finished &);
template std::string BytesOf(const Fault &);
template Work RecordOf(const std::string &);
template Ready RecordOf(const std::string &);
template Farewell RecordOf(const std::string &);
template Finished RecordOf(const std::string &);
template Fault RecordOf(const std::string &);

// ----------------------------------------------------------------------------------------------------------
// The job

namespace
{

// The lengths of the arrays, which follow.
struct Lengths {
  std::uint64_t net_starts, pins, cell_weights, net_weights, target_weights, fixed;
};

} // namespace

static Lengths LengthsOf(const Job &job)
{
  return {job.hypergraph.net_starts.size(),   job.hypergraph.pins.size(),
          job.hypergraph.cell_weights.size(), job.hypergraph.net_weights.size(),
          job.targets.target_weights.size(),  job.targets.fixed.size()};
}

template <class T>
static void SendArray(Link *link, std::span<const T> array)
{
  Broadcast(link, const_cast<T *>(array.data()), array.size_bytes()); // only read on rank 0
}

void SendJob(Link *link, const Job &job)
{
  Packer packer;

  packer(kapris::Version());
  packer(LengthsOf(job));
  packer(job.hypergraph.ncells);
  packer(job.targets.nparts);
  packer(job.islands);
  packer(job.patience);
  packer(static_cast<bool>(job.options.log));
  VisitOptions(packer, job.options);
  for (int rank = 1; rank < link->nranks; rank++)
    Send(link, rank, Tag::JOB, packer.bytes);
  SendArray(link, job.hypergraph.net_starts);
  SendArray(link, job.hypergraph.pins);
  SendArray(link, job.hypergraph.cell_weights);
  SendArray(link, job.hypergraph.net_weights);
  SendArray(link, job.targets.target_weights);
  SendArray(link, job.targets.fixed);
}

template <class T>
static std::span<const T> TakeArray(Link *link, std::uint64_t length, std::vector<T> *array)
{
  array->resize(length);
  Broadcast(link, array->data(), sizeof(T) * length);
  return *array;
}

std::unique_ptr<Job> TakeJob(Link *link, const Message &message)
{
  auto job = std::make_unique<Job>();
  Unpacker unpacker(message.bytes);
  std::string version;
  Lengths lengths;
  bool logs = false;

  unpacker(version);
  if (version != kapris::Version())
    throw std::runtime_error("rank 0 is of version " + version + ", this rank of " + kapris::Version());
  unpacker(lengths);
  unpacker(job->hypergraph.ncells);
  unpacker(job->targets.nparts);
  unpacker(job->islands);
  unpacker(job->patience);
  unpacker(logs);
  VisitOptions(unpacker, job->options);
  job->hypergraph.net_starts = TakeArray(link, lengths.net_starts, &job->net_starts);
  job->hypergraph.pins = TakeArray(link, lengths.pins, &job->pins);
  job->hypergraph.cell_weights = TakeArray(link, lengths.cell_weights, &job->cell_weights);
  job->hypergraph.net_weights = TakeArray(link, lengths.net_weights, &job->net_weights);
  job->targets.target_weights = TakeArray(link, lengths.target_weights, &job->target_weights);
  job->targets.fixed = TakeArray(link, lengths.fixed, &job->fixed);
  if (logs)
    job->options.log = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); };
  return job;
}

} // namespace kapris_mpi
