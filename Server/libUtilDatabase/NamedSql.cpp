#include "NamedSql.h"

#include <algorithm>
#include <cctype>

namespace wrb {
namespace {

bool IsNameCharacter(char c) {
    return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool IsSigil(char c) {
    return c == ':' || c == '@' || c == '$';
}

// Where the piece that starts `sql` ends: a comment, a text in quotes, a name or number with its sigil, or one
// character.
std::size_t EndOfPiece(std::string_view sql) {
    if (sql.starts_with("--")) {
        return std::min(sql.size(), sql.find('\n'));
    }
    if (sql.front() == '\'') {
        const std::size_t end = sql.find('\'', 1);
        return end == std::string_view::npos ? sql.size() : end + 1;
    }
    if (!IsSigil(sql.front()) && !IsNameCharacter(sql.front())) {
        return 1;
    }
    return static_cast<std::size_t>(std::find_if_not(sql.begin() + 1, sql.end(), IsNameCharacter) - sql.begin());
}

}  // namespace

NumberedSql NumberParameters(std::string_view sql) {
    NumberedSql numbered;
    while (!sql.empty()) {
        const std::string_view piece = sql.substr(0, EndOfPiece(sql));
        if (IsSigil(piece.front()) && piece.size() > 1) {
            numbered.names.emplace_back(piece.substr(1));
            const std::string parameter = ":p" + std::to_string(numbered.names.size());
            numbered.text += piece.front() == ':' ? parameter : "CAST(" + parameter + " AS BIGINT)";
        } else {
            numbered.text += piece;
        }
        sql.remove_prefix(piece.size());
    }
    return numbered;
}

std::vector<std::string> SplitStatements(std::string_view sql) {
    std::vector<std::string> statements(1);
    while (!sql.empty()) {
        const std::string_view piece = sql.substr(0, EndOfPiece(sql));
        if (piece == ";") {
            statements.emplace_back();
        } else if (!piece.starts_with("--") && !(statements.back().empty() && std::isspace(piece.front()) != 0)) {
            statements.back() += piece;
        }
        sql.remove_prefix(piece.size());
    }
    std::erase(statements, std::string());
    return statements;
}

}  // namespace wrb
