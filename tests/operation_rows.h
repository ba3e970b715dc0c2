#ifndef ATTALVEN_TESTS_OPERATION_ROWS_H
#define ATTALVEN_TESTS_OPERATION_ROWS_H

// One call of every exported operation with an input that leads it through much of its code.

#include <functional>
#include <memory>
#include <span>

#include "kit/site.h"

/// What a call that met a fault may give.
enum class Rule {
    kWhole,  // the undisturbed result or an empty one
    kLines,  // lines of the undisturbed result, in their order
    kParts,  // the same but for parts whose header, and names whose converter, memory did not hold
    kOther   // something else that is documented: only crashes, leaks and stray files count
};

/// The site and the inputs of one row's calls.
struct World : kit::Site {
    World();
    ~World() override;
    void TestBody() override {}

    const std::string& place() const { return dir; }
    FILE* sample(long at = 0);  // the sample mailbox, at that byte
    FILE* stream(const char* text);
    MailInfo* message(int);  // its n-th message, parsed; the world's
    Fldr* folder();          // its index; the world's
    Fldr* marked();          // a copy in the spool, opened, with marks
    void writeFiles();       // the settings files hold "old"
    char** attachments();
    char** uploads();                      // entries that the cleanup removes
    void** view(int n);                    // the slot of a message page
    const char* code();                    // the authentication code of kim
    char* server(bool isGateway = false);  // plays one delivery; its address
    unsigned short gateway();              // the same for a short message; its port
    void forget();                         // what the last call was given

    FILE* out = nullptr;
    alignas(16) char buffer[8192];
    MailPreference preference = {};
    MailVacationPref vacation = {};
    MailAdminPreference policy = {};

  private:
    struct Inputs;
    std::unique_ptr<Inputs> inputs_;
};

struct OperationRow {
    const char* code;  // names the operations that it calls
    Rule rule;
    std::function<std::string(World&)> run;
};
std::span<const OperationRow> operationRows();

#endif
