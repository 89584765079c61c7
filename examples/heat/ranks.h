#pragma once
#include <exception>
#include <vector>

namespace heat {

// Thrown on the other ranks where a step fails on one, which says what is wrong.
struct FailedElsewhere {};

// The processes of the job: those that the launcher of parallel programs started together, numbered
// from 0, or this one alone. Whatever several of them take part in, all call in the same order.
// While one waits for others it leaves the processor to whoever wants it.
class Ranks {
public:
    // Meets the others. Throws HeatError where the launcher is of another kind than the program.
    Ranks();
    ~Ranks();
    Ranks(const Ranks&) = delete;
    Ranks& operator=(const Ranks&) = delete;

    int Own() const { return m_own; }
    int Count() const { return m_count; }
    bool IsFirst() const { return m_own == 0; }

    // Runs a step, in which no rank waits for another, and returns when all have done theirs. If it
    // throws, the exception of the first such rank goes on, there, and FailedElsewhere on all
    // others: so they all end, in order and with one complaint.
    template <class Step>
    void Together(const Step& step) {
        std::exception_ptr failure;
        try {
            step();
        } catch (...) {
            failure = std::current_exception();
        }
        const int firstToFail = static_cast<int>(Least(failure ? m_own : m_count));
        if (firstToFail == m_count) return;
        m_isEndingInOrder = true;
        if (firstToFail == m_own) std::rethrow_exception(failure);
        throw FailedElsewhere();
    }

    // Of the values that the ranks give; the same result on all of them, to the last bit.
    double Sum(double value) const;
    double Least(double value) const;
    double Greatest(double value) const;
    void Sum(std::vector<double>& values) const;  // one by one, in one message

    void Send(const std::vector<int>& values, int to) const;
    void Send(const std::vector<double>& values, int to) const;
    std::vector<int> ReceiveInts(int from) const;
    std::vector<double> ReceiveDoubles(int from) const;

    struct Message {
        int rank;
        double* values;
        int count;
    };
    // Sends and receives at once; every message needs its counterpart on the other rank.
    void Exchange(const std::vector<Message>& outgoing, const std::vector<Message>& incoming) const;

    // After a step that failed: ranks that end in order wait here for each other, and GiveUp ends
    // all others at once and does not return.
    void AwaitOthersInOrder() const;
    void GiveUp() const;

private:
    int m_own = 0;
    int m_count = 1;
    bool m_isEndingInOrder = false;
};

}  // namespace heat
