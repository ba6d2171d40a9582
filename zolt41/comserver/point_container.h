#ifndef ZOLT41_COMSERVER_POINT_CONTAINER_H_
#define ZOLT41_COMSERVER_POINT_CONTAINER_H_

#include "zolt41/comserver/connection_point.h"
#include "zolt41/comserver/section_face.h"
#include "zolt41/comserver/sink_array.h"

namespace zolt {

// The face of a section that has its connection points, of which there is one.
class SectionPointContainer final : public SectionFace<IConnectionPointContainer> {
 public:
  explicit SectionPointContainer(SectionObject &owner) : SectionFace(owner) {}
  ~SectionPointContainer();

  // False without memory; else it holds a reference.
  bool Add(SectionConnectionPoint *point);

  HRESULT EnumConnectionPoints(IEnumConnectionPoints **out) override;
  HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint **out) override;

 private:
  SinkArray points_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_POINT_CONTAINER_H_
