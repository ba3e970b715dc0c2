#include "calls.h"

#include "composed.h"

namespace kit {

Argument::Argument(const std::string& text) {
    if (text == "(null)") return;
    size_ = text.size();
    text_.reset(new char[size_ + 1]);
    memcpy(text_.get(), text.c_str(), size_ + 1);
}

void runTable(const std::string& name, std::map<std::string, Call> calls, const std::string& dir) {
    calls["setenv"] = [](Arguments& a) { return setenv(a[0], a[1], 1), ""; };
    calls["file"] = [&dir](Arguments& a) {
        return writeFile(dir + "/" + static_cast<char*>(a.at(0)), static_cast<char*>(a.at(1))), "";
    };
    auto placed = [&dir](const std::string& text) {
        return dir.empty() ? text : replaced(text, "DIR", dir);
    };
    for (const TableRow& row : table(name)) {
        Arguments arguments;
        for (const std::string& a : row.arguments) arguments.emplace_back(placed(a));
        auto call = calls.find(row.section);
        if (call == calls.end())
            ADD_FAILURE() << row.label << ": no function " << row.section;
        else
            EXPECT_EQ(call->second(arguments), placed(row.expected)) << row.label;
    }
}

}  // namespace kit
