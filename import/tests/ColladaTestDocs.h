// Small Collada documents for the tests, each written for the cases it checks. The fuzz
// seeds in fuzz/corpus/collada/ are these documents.
#pragma once

namespace ColladaTestDocs
{

// Three primitive kinds over several inputs and offsets, and a mesh whose normals come
// through `vertices`.
inline const char* const PRIMITIVES = R"dae(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <asset><up_axis>Y_UP</up_axis></asset>
  <library_geometries>
    <geometry id="shape" name="Shape">
      <mesh>
        <source id="shape-pos">
          <float_array id="shape-pos-array" count="18">0 0 0  1 0 0  1 1 0  0 1 0  2 0 0  2 1 0</float_array>
          <technique_common><accessor source="#shape-pos-array" count="6" stride="3"/></technique_common>
        </source>
        <source id="shape-nrm">
          <float_array id="shape-nrm-array" count="6">0 0 1 0 0 -1</float_array>
          <technique_common><accessor source="#shape-nrm-array" count="2" stride="3"/></technique_common>
        </source>
        <source id="shape-uv0">
          <float_array id="shape-uv0-array" count="8">0 0 1 0 1 1 0 1</float_array>
          <technique_common><accessor source="#shape-uv0-array" count="4" stride="2"/></technique_common>
        </source>
        <source id="shape-uv1">
          <float_array id="shape-uv1-array" count="12">0.5 0.5 0 0.25 0.5 0 0.25 0.25 0 0.5 0.25 0</float_array>
          <technique_common><accessor source="#shape-uv1-array" count="4" stride="3"/></technique_common>
        </source>
        <source id="shape-col">
          <float_array id="shape-col-array" count="8">1 0 0 1 0 1 0 1</float_array>
          <technique_common><accessor source="#shape-col-array" count="2" stride="4"/></technique_common>
        </source>
        <vertices id="shape-vtx">
          <input semantic="POSITION" source="#shape-pos"/>
        </vertices>
        <triangles material="symA" count="2">
          <input semantic="VERTEX" source="#shape-vtx" offset="0"/>
          <input semantic="NORMAL" source="#shape-nrm" offset="1"/>
          <input semantic="TEXCOORD" source="#shape-uv1" offset="2" set="1"/>
          <input semantic="TEXCOORD" source="#shape-uv0" offset="2" set="0"/>
          <p>0 0 0  1 0 1  2 0 2   0 1 0  2 1 2  3 1 3</p>
        </triangles>
        <polylist material="symB" count="2">
          <input semantic="VERTEX" source="#shape-vtx" offset="0"/>
          <input semantic="TEXCOORD" source="#shape-uv0" offset="2" set="0"/>
          <input semantic="COLOR" source="#shape-col" offset="1"/>
          <vcount>4 3</vcount>
          <p>1 0 0  4 0 1  5 1 2  2 1 3   0 0 0  1 1 1  3 0 3</p>
        </polylist>
        <polygons material="symA" count="3">
          <input semantic="VERTEX" source="#shape-vtx" offset="0"/>
          <input semantic="NORMAL" source="#shape-nrm" offset="1"/>
          <p>0 0 1 0 2 0 3 0</p>
          <ph><p>1 1 4 1 5 1</p><h>2 1</h></ph>
          <p>0 1 1 1 4 1 5 1 3 1</p>
        </polygons>
      </mesh>
    </geometry>
    <geometry id="maya" name="Maya">
      <mesh>
        <source id="maya-pos">
          <float_array id="maya-pos-array" count="9">0 0 0 1 0 0 0 1 0</float_array>
          <technique_common><accessor source="#maya-pos-array" count="3" stride="3"/></technique_common>
        </source>
        <source id="maya-nrm">
          <float_array id="maya-nrm-array" count="9">0 0 1 0 0 1 0 0 1</float_array>
          <technique_common><accessor source="#maya-nrm-array" count="3" stride="3"/></technique_common>
        </source>
        <source id="maya-uv">
          <float_array id="maya-uv-array" count="2">0.25 0.75</float_array>
          <technique_common><accessor source="#maya-uv-array" count="1" stride="2"/></technique_common>
        </source>
        <vertices id="maya-vtx">
          <input semantic="POSITION" source="#maya-pos"/>
          <input semantic="NORMAL" source="#maya-nrm"/>
        </vertices>
        <triangles material="symA" count="1">
          <input semantic="VERTEX" source="#maya-vtx" offset="0"/>
          <input semantic="TEXCOORD" source="#maya-uv" offset="1" set="0"/>
          <p>0 0 1 0 2 0</p>
        </triangles>
        <tristrips count="1"><input semantic="VERTEX" source="#maya-vtx" offset="0"/><p>0 1 2</p></tristrips>
      </mesh>
    </geometry>
    <geometry id="spline"><spline/></geometry>
  </library_geometries>
</COLLADA>
)dae";

// Images, effects and the texture chain in its forms, and the exporters' extras.
inline const char* const MATERIALS = R"dae(<?xml version="1.0"?>
<COLLADA version="1.4.1">
  <library_images>
    <image id="wood-img" name="Wood"><init_from>textures/wood.tga</init_from></image>
    <image id="stone-img"><init_from><ref>stone.dds</ref></init_from></image>
    <image id="bump-img"><init_from>bump.tga</init_from></image>
  </library_images>
  <library_effects>
    <effect id="wood-fx" name="WoodFx">
      <profile_COMMON>
        <newparam sid="wood-surface"><surface type="2D"><init_from>wood-img</init_from></surface></newparam>
        <newparam sid="wood-sampler"><sampler2D><source>wood-surface</source></sampler2D></newparam>
        <technique sid="common">
          <phong>
            <emission><color>0.1 0.2 0.3 1</color></emission>
            <ambient><color>0.5 0.5 0.5</color></ambient>
            <diffuse><texture texture="wood-sampler" texcoord="UVSET0"/></diffuse>
            <specular><color>1 1 1 1</color></specular>
            <shininess><float>12.5</float></shininess>
            <transparent><color>0 0 0 1</color></transparent>
            <transparency><float>0.25</float></transparency>
          </phong>
          <extra><technique profile="MAYA"><bump><texture texture="bump-img" texcoord="UVSET1"/></bump></technique></extra>
        </technique>
      </profile_COMMON>
      <extra><technique profile="MAX3D"><double_sided>1</double_sided></technique></extra>
    </effect>
    <effect id="stone-fx">
      <profile_COMMON>
        <newparam sid="stone-sampler"><sampler2D><instance_image url="#stone-img"/></sampler2D></newparam>
        <technique sid="common"><lambert><diffuse><texture texture="stone-sampler" texcoord="CHANNEL1"/></diffuse></lambert></technique>
        <extra><technique profile="GOOGLEEARTH"><double_sided>0</double_sided></technique></extra>
      </profile_COMMON>
    </effect>
    <effect id="direct-fx">
      <profile_COMMON><technique sid="t"><blinn><diffuse><texture texture="bump-img" texcoord="T"/></diffuse></blinn></technique></profile_COMMON>
    </effect>
    <effect id="lost-fx">
      <profile_COMMON>
        <newparam sid="lost-sampler"><sampler2D><source>lost-surface</source></sampler2D></newparam>
        <technique sid="t"><constant><emission><texture texture="lost-sampler" texcoord="T"/></emission></constant></technique>
      </profile_COMMON>
    </effect>
  </library_effects>
  <library_materials>
    <material id="wood" name="WoodMat"><instance_effect url="#wood-fx"/></material>
    <material id="stone"><instance_effect url="#stone-fx"/></material>
    <material id="direct"><instance_effect url="#direct-fx"/></material>
    <material id="lost"><instance_effect url="#lost-fx"/></material>
    <material id="nowhere"><instance_effect url="#missing-fx"/></material>
  </library_materials>
</COLLADA>
)dae";

// Two skins: joint names with INV_BIND_MATRIX and a bind shape; joint ids with a float4x4
// accessor that leaves out its stride, and an influence on the bind shape itself (-1).
inline const char* const SKINS = R"dae(<COLLADA>
  <library_geometries>
    <geometry id="body"><mesh>
      <source id="body-pos"><float_array id="body-pos-a" count="9">0 0 0 1 0 0 0 1 0</float_array>
        <technique_common><accessor source="#body-pos-a" count="3" stride="3"/></technique_common></source>
      <vertices id="body-v"><input semantic="POSITION" source="#body-pos"/></vertices>
      <triangles count="1"><input semantic="VERTEX" source="#body-v" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry>
  </library_geometries>
  <library_controllers>
    <controller id="body-skin" name="BodySkin">
      <skin source="#body">
        <bind_shape_matrix>1 0 0 5  0 1 0 6  0 0 1 7  0 0 0 1</bind_shape_matrix>
        <source id="body-joints"><Name_array id="body-joints-a" count="2">hip knee</Name_array>
          <technique_common><accessor source="#body-joints-a" count="2"><param name="JOINT" type="name"/></accessor></technique_common></source>
        <source id="body-bind"><float_array id="body-bind-a" count="32">1 0 0 -1  0 1 0 -2  0 0 1 -3  0 0 0 1  1 0 0 0  0 1 0 0  0 0 1 -4  0 0 0 1</float_array>
          <technique_common><accessor source="#body-bind-a" count="2" stride="16"><param name="TRANSFORM" type="float4x4"/></accessor></technique_common></source>
        <source id="body-w"><float_array id="body-w-a" count="4">1 0.75 0.25 0.5</float_array>
          <technique_common><accessor source="#body-w-a" count="4"><param name="WEIGHT" type="float"/></accessor></technique_common></source>
        <joints>
          <input semantic="JOINT" source="#body-joints"/>
          <input semantic="INV_BIND_MATRIX" source="#body-bind"/>
        </joints>
        <vertex_weights count="3">
          <input semantic="JOINT" source="#body-joints" offset="0"/>
          <input semantic="WEIGHT" source="#body-w" offset="1"/>
          <vcount>1 2 2</vcount>
          <v>0 0  0 1 1 2  1 3 -1 3</v>
        </vertex_weights>
      </skin>
    </controller>
    <controller id="ids-skin">
      <skin source="#body">
        <source id="ids-joints"><IDREF_array id="ids-joints-a" count="1">hip-node</IDREF_array></source>
        <source id="ids-bind"><float_array id="ids-bind-a" count="16">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</float_array>
          <technique_common><accessor source="#ids-bind-a" count="1"><param name="INV_BIND_MATRIX" type="float4x4"/></accessor></technique_common></source>
        <source id="ids-w"><float_array id="ids-w-a" count="1">1</float_array></source>
        <joints><input semantic="JOINT" source="#ids-joints"/><input semantic="INV_BIND_MATRIX" source="#ids-bind"/></joints>
        <vertex_weights count="3">
          <input semantic="JOINT" source="#ids-joints" offset="0"/>
          <input semantic="WEIGHT" source="#ids-w" offset="1"/>
          <vcount>1 1 1</vcount><v>0 0 0 0 0 0</v>
        </vertex_weights>
      </skin>
    </controller>
    <controller id="morph"><morph source="#body"/></controller>
  </library_controllers>
</COLLADA>
)dae";

// The four light kinds; exporter values in extra/technique and, the 1.4.0 way, in a
// technique of the light.
inline const char* const LIGHTS = R"dae(<COLLADA version="1.4.1">
  <library_lights>
    <light id="amb" name="Ambient"><technique_common><ambient><color>0.1 0.2 0.3</color></ambient></technique_common></light>
    <light id="sun" name="Sun">
      <technique_common><directional><color>1 0.9 0.8</color></directional></technique_common>
      <technique profile="MAX3D">
        <intensity>-2</intensity><outer_cone>6</outer_cone><aspect_ratio>1.5</aspect_ratio>
        <falloff_angle>0.5</falloff_angle><overshoot>true</overshoot>
        <far_attenuation_start>10</far_attenuation_start><far_attenuation_end>80</far_attenuation_end>
      </technique>
    </light>
    <light id="bulb">
      <technique_common><point><color>1 1 1</color><constant_attenuation>0.5</constant_attenuation>
        <linear_attenuation>0.25</linear_attenuation><quadratic_attenuation>0.125</quadratic_attenuation></point></technique_common>
      <extra><technique profile="FCOLLADA"><intensity>3</intensity><far_attenuation_end>300</far_attenuation_end></technique></extra>
    </light>
    <light id="spot">
      <technique_common><spot><color>0.5 0.5 1</color><falloff_angle>40</falloff_angle><falloff_exponent>2</falloff_exponent></spot></technique_common>
      <extra>
        <technique profile="MAYA"><intensity>0.75</intensity></technique>
        <technique profile="MAX3D"><intensity>9</intensity><outer_cone>50</outer_cone><overshoot>0</overshoot></technique>
      </extra>
    </light>
  </library_lights>
  <library_cameras>
    <camera id="persp" name="Persp"><optics><technique_common><perspective>
      <xfov>49.1</xfov><yfov>37.8</yfov><aspect_ratio>1.3</aspect_ratio><znear>0.1</znear><zfar>1000</zfar>
    </perspective></technique_common></optics></camera>
    <camera id="ortho"><optics><technique_common><orthographic>
      <xmag>3</xmag><ymag>2</ymag><znear>1</znear><zfar>50</zfar>
    </orthographic></technique_common></optics></camera>
  </library_cameras>
</COLLADA>
)dae";

// A node tree: nested transforms, a baked matrix, a joint, user properties, every instance
// kind with material bindings, and library_nodes reached through instance_node.
inline const char* const NODES = R"dae(<COLLADA>
  <asset><up_axis>Z_UP</up_axis></asset>
  <library_geometries>
    <geometry id="box"><mesh>
      <source id="box-pos"><float_array id="box-pos-a" count="9">0 0 0 1 0 0 0 1 0</float_array>
        <technique_common><accessor source="#box-pos-a" count="3" stride="3"/></technique_common></source>
      <vertices id="box-v"><input semantic="POSITION" source="#box-pos"/></vertices>
      <triangles count="1" material="boxSG"><input semantic="VERTEX" source="#box-v" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry>
  </library_geometries>
  <library_materials><material id="red"><instance_effect url="#red-fx"/></material></library_materials>
  <library_effects><effect id="red-fx"><profile_COMMON><technique sid="c"><lambert/></technique></profile_COMMON></effect></library_effects>
  <library_lights><light id="lamp"><technique_common><point><color>1 1 1</color></point></technique_common></light></library_lights>
  <library_cameras><camera id="cam"><optics><technique_common><perspective><yfov>40</yfov></perspective></technique_common></optics></camera></library_cameras>
  <library_nodes>
    <node id="prop" name="Prop"><translate>0 0 5</translate><instance_geometry url="#box"/></node>
  </library_nodes>
  <library_visual_scenes>
    <visual_scene id="other"><node id="ignored"/></visual_scene>
    <visual_scene id="main" name="Main">
      <node id="root" sid="r" name="Root">
        <translate sid="translate">1 2 3</translate>
        <rotate sid="rotateZ">0 0 1 90</rotate>
        <extra><technique profile="FCOLLADA"><user_properties>lod=1
tag</user_properties></technique></extra>
        <node id="child" name="Child">
          <scale>2 2 2</scale>
          <translate>10 0 0</translate>
          <instance_geometry url="#box">
            <bind_material><technique_common>
              <instance_material symbol="boxSG" target="#red">
                <bind_vertex_input semantic="UVSET0" input_semantic="TEXCOORD" input_set="1"/>
              </instance_material>
              <instance_material symbol="gone" target="#nothing"/>
            </technique_common></bind_material>
          </instance_geometry>
        </node>
        <node id="bone" name="Bone" sid="b1" type="JOINT"/>
      </node>
      <node id="baked">
        <matrix sid="transform">0 -1 0 1  1 0 0 2  0 0 1 3  0 0 0 1</matrix>
        <instance_light url="#lamp"/>
        <instance_camera url="#cam"/>
        <instance_controller url="#skin"><skeleton>#bone</skeleton></instance_controller>
        <instance_node url="#prop"/>
      </node>
      <node id="looker"><lookat>0 0 10  0 0 0  0 1 0</lookat></node>
    </visual_scene>
  </library_visual_scenes>
  <scene><instance_visual_scene url="#main"/></scene>
</COLLADA>
)dae";

// Every target form of a channel, nested animations, a clip, and "AnimStart=2".
inline const char* const ANIMATIONS = R"dae(<COLLADA>
  <asset><contributor><comments>ExportNormals=1;AnimStart=2;AnimEnd=4;</comments></contributor></asset>
  <library_visual_scenes><visual_scene id="s">
    <node id="mat"><matrix sid="transform">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node>
    <node id="maya">
      <translate sid="translate">0 0 0</translate>
      <rotate sid="rotateZ">0 0 1 0</rotate><rotate sid="rotateY">0 1 0 0</rotate><rotate sid="rotateX">1 0 0 0</rotate>
      <scale sid="scale">1 1 1</scale>
    </node>
    <node id="max">
      <translate sid="Trans">0 0 0</translate>
      <rotate sid="RotZ">0 0 1 0</rotate><rotate sid="RotY">0 1 0 0</rotate><rotate sid="RotX">1 0 0 0</rotate>
    </node>
    <node id="blend"><translate sid="translation">0 0 0</translate></node>
  </visual_scene></library_visual_scenes>
  <library_animations>
    <animation id="outer">
      <source id="t2"><float_array id="t2-a" count="2">2 3</float_array></source>
      <source id="one2"><float_array id="one2-a" count="2">0 10</float_array></source>
      <source id="mat2"><float_array id="mat2-a" count="32">1 0 0 1 0 1 0 2 0 0 1 3 0 0 0 1  1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1</float_array>
        <technique_common><accessor source="#mat2-a" count="2" stride="16"/></technique_common></source>
      <sampler id="s-x"><input semantic="INPUT" source="#t2"/><input semantic="OUTPUT" source="#one2"/></sampler>
      <sampler id="s-mat"><input semantic="INPUT" source="#t2"/><input semantic="OUTPUT" source="#mat2"/></sampler>
      <channel source="#s-mat" target="mat/transform"/>
      <animation id="inner">
        <channel source="#s-x" target="mat/transform(3)(0)"/>
        <channel source="#s-x" target="mat/transform(3)(1)"/>
        <channel source="#s-x" target="mat/transform(3)(2)"/>
        <animation>
          <channel source="#s-x" target="maya/translate.X"/>
          <channel source="#s-x" target="maya/translate.Y"/>
          <channel source="#s-x" target="maya/translate.Z"/>
        </animation>
      </animation>
    </animation>
    <animation id="maxanim">
      <source id="mt"><float_array id="mt-a" count="2">2 3</float_array></source>
      <source id="mv"><float_array id="mv-a" count="2">0 4</float_array></source>
      <sampler id="ms"><input semantic="INPUT" source="#mt"/><input semantic="OUTPUT" source="#mv"/></sampler>
      <channel source="#ms" target="max/Trans.X"/>
      <channel source="#ms" target="max/Trans.Y"/>
      <channel source="#ms" target="max/Trans.Z"/>
      <channel source="#ms" target="max/RotX.ANGLE"/>
      <channel source="#ms" target="max/RotY.ANGLE"/>
      <channel source="#ms" target="max/RotZ.ANGLE"/>
    </animation>
    <animation id="rest">
      <source id="rt"><float_array id="rt-a" count="3">2 2.5 4</float_array></source>
      <source id="rv"><float_array id="rv-a" count="3">0 90 180</float_array></source>
      <source id="rt2"><float_array id="rt2-a" count="2">2 3</float_array></source>
      <source id="rv3"><float_array id="rv3-a" count="6">0 0 0 4 5 6</float_array>
        <technique_common><accessor source="#rv3-a" count="2" stride="3"/></technique_common></source>
      <source id="rvs"><float_array id="rvs-a" count="6">1 1 1 3 3 3</float_array>
        <technique_common><accessor source="#rvs-a" count="2" stride="3"/></technique_common></source>
      <sampler id="rs"><input semantic="INPUT" source="#rt"/><input semantic="OUTPUT" source="#rv"/></sampler>
      <sampler id="rs3"><input semantic="INPUT" source="#rt2"/><input semantic="OUTPUT" source="#rv3"/></sampler>
      <sampler id="rss"><input semantic="INPUT" source="#rt2"/><input semantic="OUTPUT" source="#rvs"/></sampler>
      <channel source="#rs" target="maya/rotateX.ANGLE"/>
      <channel source="#rs" target="maya/rotateY.ANGLE"/>
      <channel source="#rs" target="maya/rotateZ.ANGLE"/>
      <channel source="#rs3" target="blend/translation"/>
      <channel source="#rs3" target="maya/translate"/>
      <channel source="#rss" target="maya/scale"/>
      <channel source="#rs" target="morph-weights(0)"/>
    </animation>
  </library_animations>
  <library_animation_clips>
    <animation_clip id="walk" name="Walk" start="2" end="3.5">
      <instance_animation url="#outer"/><instance_animation url="#rest"/><instance_animation url="#none"/>
    </animation_clip>
  </library_animation_clips>
</COLLADA>
)dae";

} // namespace ColladaTestDocs
