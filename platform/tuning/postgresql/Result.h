// The rows that a query gave, as texts. They stay valid as long as the result lives.
#ifndef KNOB_POSTGRESQL_RESULT_H
#define KNOB_POSTGRESQL_RESULT_H

#include <libpq-fe.h>
#include <memory>
#include <string_view>

namespace tn::postgresql {

class Result {
 public:
  explicit Result(PGresult* result) : result_(result) {}

  int rows() const { return PQntuples(result_.get()); }
  // Empty for NULL.
  std::string_view text(int row, int column) const {
    return {PQgetvalue(result_.get(), row, column),
            static_cast<std::size_t>(PQgetlength(result_.get(), row, column))};
  }
  bool flag(int row, int column) const { return text(row, column) == "t"; }

  const PGresult* get() const { return result_.get(); }

 private:
  struct Clear {
    void operator()(PGresult* result) const { PQclear(result); }
  };
  std::unique_ptr<PGresult, Clear> result_;
};

}  // namespace tn::postgresql

#endif
