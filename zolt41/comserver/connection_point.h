#ifndef ZOLT41_COMSERVER_CONNECTION_POINT_H_
#define ZOLT41_COMSERVER_CONNECTION_POINT_H_

#include "zolt41/comserver/sink_array.h"
#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/ref_counted.h"

namespace zolt {

// Where sinks for one outgoing interface are connected. It holds its sinks, and they hear for as
// long as the section lives; kept past that, it takes no sinks any more.
class SectionConnectionPoint final : public RefCounted<IConnectionPoint, IID_IConnectionPoint> {
 public:
  SectionConnectionPoint(IConnectionPointContainer *container, REFIID iid)
      : container_(container), iid_(iid) {}

  HRESULT GetConnectionInterface(IID *iid) override;
  // E_UNEXPECTED past the section's end.
  HRESULT GetConnectionPointContainer(IConnectionPointContainer **out) override;
  // The cookie is the sink's address. A sink connected twice hears twice. E_UNEXPECTED past the
  // section's end; E_OUTOFMEMORY with nothing connected.
  HRESULT Advise(IUnknown *sink, DWORD_PTR *cookie) override;
  HRESULT Unadvise(DWORD_PTR cookie) override;
  HRESULT EnumConnections(IEnumConnections **out) override;

  // The section is ending.
  void LoseContainer() { container_ = nullptr; }

 private:
  ~SectionConnectionPoint() override { sinks_.ReleaseAll(); }

  IConnectionPointContainer *container_;
  IID iid_;
  SinkArray sinks_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_CONNECTION_POINT_H_
