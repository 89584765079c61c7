#include "ranks.h"

#include <mpi.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <pthread.h>
#include <signal.h>

#include <climits>
#include <cstdlib>
#include <thread>

#include "heat_error.h"

namespace heat {
namespace {

constexpr int kTag = 0;

// MPI waits in a loop that never yields, which on fewer processors than ranks costs each of them
// its whole time slice.
void Finish(MPI_Request request) {
    for (int isDone = 0;;) {
        MPI_Test(&request, &isDone, MPI_STATUS_IGNORE);
        if (isDone) return;
        std::this_thread::yield();
    }
}

void Reduce(double* values, int count, MPI_Op operation) {
    MPI_Request request;
    MPI_Iallreduce(MPI_IN_PLACE, values, count, MPI_DOUBLE, operation, MPI_COMM_WORLD, &request);
    Finish(request);
}

void SendValues(const void* values, std::size_t count, MPI_Datatype type, int to) {
    if (count > INT_MAX) throw HeatError(Text("the part is too large for rank ", to));
    MPI_Request request;
    MPI_Isend(values, static_cast<int>(count), type, to, kTag, MPI_COMM_WORLD, &request);
    Finish(request);
}

template <class T>
std::vector<T> ReceiveValues(MPI_Datatype type, int from) {
    MPI_Status status;
    for (int isHere = 0;;) {
        MPI_Iprobe(from, kTag, MPI_COMM_WORLD, &isHere, &status);
        if (isHere) break;
        std::this_thread::yield();
    }
    int count = 0;
    MPI_Get_count(&status, type, &count);
    std::vector<T> values(static_cast<std::size_t>(count));
    MPI_Recv(values.data(), count, type, from, kTag, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
    return values;
}

// Threads that MPI makes must leave signals to those of the job.
void StartMpi() {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    int given = 0;
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &given);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

Ranks::Ranks() {
    KZMBasOmniProcessInfo::Initialize();
    const char* const size = std::getenv("PMI_SIZE");
    if (size == nullptr) {  // nobody launched several
        if (std::getenv("OMPI_COMM_WORLD_SIZE") == nullptr) return;
        throw HeatError("start the ranks with the mpiexec of MPICH, not with that of Open MPI");
    }
    StartMpi();
    MPI_Comm_rank(MPI_COMM_WORLD, &m_own);
    MPI_Comm_size(MPI_COMM_WORLD, &m_count);
    if (m_own != KZMBasOmniProcessInfo::Rank() || m_count != std::atoi(size)) {
        throw HeatError(Text("the launcher started rank ", KZMBasOmniProcessInfo::Rank(), " of ",
                             size, ", but MPI takes it for rank ", m_own, " of ", m_count));
    }
}

Ranks::~Ranks() {
    int isInitialised = 0;
    MPI_Initialized(&isInitialised);
    if (isInitialised) MPI_Finalize();
}

double Ranks::Sum(double value) const {
    if (m_count > 1) Reduce(&value, 1, MPI_SUM);
    return value;
}

double Ranks::Least(double value) const {
    if (m_count > 1) Reduce(&value, 1, MPI_MIN);
    return value;
}

double Ranks::Greatest(double value) const {
    if (m_count > 1) Reduce(&value, 1, MPI_MAX);
    return value;
}

void Ranks::Sum(std::vector<double>& values) const {
    if (m_count > 1) Reduce(values.data(), static_cast<int>(values.size()), MPI_SUM);
}

void Ranks::Send(const std::vector<int>& values, int to) const {
    SendValues(values.data(), values.size(), MPI_INT, to);
}

void Ranks::Send(const std::vector<double>& values, int to) const {
    SendValues(values.data(), values.size(), MPI_DOUBLE, to);
}

std::vector<int> Ranks::ReceiveInts(int from) const { return ReceiveValues<int>(MPI_INT, from); }

std::vector<double> Ranks::ReceiveDoubles(int from) const {
    return ReceiveValues<double>(MPI_DOUBLE, from);
}

void Ranks::Exchange(const std::vector<Message>& outgoing,
                     const std::vector<Message>& incoming) const {
    std::vector<MPI_Request> requests;
    requests.reserve(outgoing.size() + incoming.size());
    for (const Message& each : incoming) {
        MPI_Irecv(each.values, each.count, MPI_DOUBLE, each.rank, kTag, MPI_COMM_WORLD,
                  &requests.emplace_back());
    }
    for (const Message& each : outgoing) {
        MPI_Isend(each.values, each.count, MPI_DOUBLE, each.rank, kTag, MPI_COMM_WORLD,
                  &requests.emplace_back());
    }
    for (const MPI_Request request : requests) Finish(request);
}

void Ranks::AwaitOthersInOrder() const {
    if (m_isEndingInOrder) Least(0);
}

void Ranks::GiveUp() const {
    if (m_count > 1 && !m_isEndingInOrder) MPI_Abort(MPI_COMM_WORLD, 1);
}

}  // namespace heat
